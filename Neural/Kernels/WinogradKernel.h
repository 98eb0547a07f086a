// The Winograd transform of a 3x3 kernel, F(4x4,3x3).
#pragma once

#include <array>
#include <cmath>

namespace quillmere::neural {

/// Output pixels a side of a tile, and points (so input pixels) a side.
inline constexpr int kWinogradTile = 4;
inline constexpr int kWinogradPoints = 6;
inline constexpr int kWinogradSpots = kWinogradPoints * kWinogradPoints;

/// Winograd's minimal filtering (A. Lavin, S. Gray, "Fast Algorithms for Convolutional Neural
/// Networks", 2015) as Toom-Cook interpolation: the products of the transformed kernel and the
/// transformed input are the values of a product of polynomials at these points; the sixth is
/// infinity, whose value is the leading coefficient. Points that are each other's inverse keep all
/// the constants within 1/2.83 and 2.83, which loses several times less precision than 0, 1, -1, 2
/// and -2 (B. Barabasz et al., "Error Analysis and Improving the Accuracy of Winograd Convolution
/// for Deep Neural Networks", 2020).
inline const std::array<double, 5> kWinogradFinitePoints{0.0, std::sqrt(0.5), -std::sqrt(0.5),
                                                         std::sqrt(2.0), -std::sqrt(2.0)};

/// The kernel's side of the transform, by spot: row by row, kWinogradPoints a row.
inline std::array<double, kWinogradSpots> transformKernel(const float* kernel) {
    const auto transformed = [](double a, double b, double c) {
        std::array<double, kWinogradPoints> values{};
        for (std::size_t i = 0; i < kWinogradFinitePoints.size(); ++i) {
            const double x = kWinogradFinitePoints[i];
            double divisor = 1;
            for (std::size_t j = 0; j < kWinogradFinitePoints.size(); ++j) {
                if (j != i) divisor *= x - kWinogradFinitePoints[j];
            }
            values[i] = (a + x * b + x * x * c) / divisor;
        }
        values.back() = c;
        return values;
    };
    std::array<double, kWinogradSpots> spots{};
    std::array<std::array<double, kWinogradPoints>, 3> columns;
    for (int x = 0; x < 3; ++x) {
        columns[x] = transformed(kernel[x], kernel[3 + x], kernel[6 + x]);
    }
    for (int y = 0; y < kWinogradPoints; ++y) {
        const auto row = transformed(columns[0][y], columns[1][y], columns[2][y]);
        for (int x = 0; x < kWinogradPoints; ++x) spots[y * kWinogradPoints + x] = row[x];
    }
    return spots;
}

}  // namespace quillmere::neural
