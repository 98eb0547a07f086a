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

/// The kernel's side of the transform in one dimension, by point and tap.
inline std::array<std::array<double, 3>, kWinogradPoints> kernelTransform() {
    std::array<std::array<double, 3>, kWinogradPoints> matrix{};
    for (std::size_t i = 0; i < kWinogradFinitePoints.size(); ++i) {
        const double x = kWinogradFinitePoints[i];
        double divisor = 1;
        for (std::size_t j = 0; j < kWinogradFinitePoints.size(); ++j) {
            if (j != i) divisor *= x - kWinogradFinitePoints[j];
        }
        matrix[i] = {1 / divisor, x / divisor, x * x / divisor};
    }
    matrix.back() = {0, 0, 1};
    return matrix;
}

/// `kCount` kernels at once, by tap, into their transforms by spot: row by row, kWinogradPoints a
/// row.
template <std::size_t kCount>
void transformKernels(const std::array<std::array<double, kCount>, 9>& taps,
                      std::array<std::array<double, kCount>, kWinogradSpots>& spots) {
    static const auto matrix = kernelTransform();
    for (int y = 0; y < kWinogradPoints; ++y) {
        std::array<std::array<double, kCount>, 3> columns;
        for (int x = 0; x < 3; ++x) {
            for (std::size_t n = 0; n < kCount; ++n) {
                columns[x][n] = matrix[y][0] * taps[x][n] + matrix[y][1] * taps[3 + x][n] +
                                matrix[y][2] * taps[6 + x][n];
            }
        }
        for (int x = 0; x < kWinogradPoints; ++x) {
            for (std::size_t n = 0; n < kCount; ++n) {
                spots[y * kWinogradPoints + x][n] = matrix[x][0] * columns[0][n] +
                                                    matrix[x][1] * columns[1][n] +
                                                    matrix[x][2] * columns[2][n];
            }
        }
    }
}

}  // namespace quillmere::neural
