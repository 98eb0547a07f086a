#include "Benchmarks/PictureQuality.h"

#include <array>
#include <cmath>
#include <functional>

namespace quillmere::benchmark {
namespace {

constexpr double kPeak = 255;

/// A value of each pixel of two pictures.
GreyPicture combined(const GreyPicture& a, const GreyPicture& b,
                     const std::function<float(float, float)>& value) {
    GreyPicture result(a.size);
    for (std::size_t n = 0; n < a.pixels.size(); ++n) {
        result.pixels[n] = value(a.pixels[n], b.pixels[n]);
    }
    return result;
}

GreyPicture product(const GreyPicture& a, const GreyPicture& b) {
    return combined(a, b, [](float x, float y) { return x * y; });
}

GreyPicture halved(const GreyPicture& picture) { return reduced(picture, 2, Reduction::area); }

double mean(const GreyPicture& picture) {
    double sum = 0;
    for (const float value : picture.pixels) sum += value;
    return sum / static_cast<double>(picture.pixels.size());
}

/// Weighted means around those pixels whose window lies inside.
GreyPicture blurred(const GreyPicture& picture) {
    constexpr int reach = 5;
    constexpr double deviation = 1.5;
    std::array<float, 2 * reach + 1> weights{};
    float sum = 0;
    for (int n = -reach; n <= reach; ++n) {
        weights[n + reach] = static_cast<float>(std::exp(-n * n / (2 * deviation * deviation)));
        sum += weights[n + reach];
    }
    GreyPicture across({picture.size.width - 2 * reach, picture.size.height});
    for (int y = 0; y < across.size.height; ++y) {
        for (int x = 0; x < across.size.width; ++x) {
            float value = 0;
            for (int n = 0; n <= 2 * reach; ++n) value += weights[n] * picture.row(y)[x + n];
            across.row(y)[x] = value / sum;
        }
    }
    GreyPicture result({across.size.width, across.size.height - 2 * reach});
    for (int y = 0; y < result.size.height; ++y) {
        for (int x = 0; x < result.size.width; ++x) {
            float value = 0;
            for (int n = 0; n <= 2 * reach; ++n) value += weights[n] * across.row(y + n)[x];
            result.row(y)[x] = value / sum;
        }
    }
    return result;
}

struct Similarity {
    double luminance = 0;
    double structure = 0;  // contrast and structure together
};

Similarity similarity(const GreyPicture& a, const GreyPicture& b) {
    constexpr double c1 = (0.01 * kPeak) * (0.01 * kPeak);
    constexpr double c2 = (0.03 * kPeak) * (0.03 * kPeak);
    const GreyPicture meanA = blurred(a), meanB = blurred(b);
    const GreyPicture squareA = blurred(product(a, a)), squareB = blurred(product(b, b));
    const GreyPicture both = blurred(product(a, b));
    Similarity sum;
    for (std::size_t n = 0; n < both.pixels.size(); ++n) {
        const double x = meanA.pixels[n], y = meanB.pixels[n];
        const double varianceX = squareA.pixels[n] - x * x;
        const double varianceY = squareB.pixels[n] - y * y;
        const double covariance = both.pixels[n] - x * y;
        sum.luminance += (2 * x * y + c1) / (x * x + y * y + c1);
        sum.structure += (2 * covariance + c2) / (varianceX + varianceY + c2);
    }
    const auto count = static_cast<double>(both.pixels.size());
    return {sum.luminance / count, sum.structure / count};
}

/// Of Prewitt's operator, at all pixels but the outermost.
GreyPicture gradientMagnitude(const GreyPicture& picture) {
    GreyPicture result({picture.size.width - 2, picture.size.height - 2});
    for (int y = 0; y < result.size.height; ++y) {
        const float *above = picture.row(y), *here = picture.row(y + 1),
                    *below = picture.row(y + 2);
        for (int x = 0; x < result.size.width; ++x) {
            float across = 0, down = 0;
            for (const float* row : {above, here, below}) across += row[x + 2] - row[x];
            for (int n = 0; n < 3; ++n) down += below[x + n] - above[x + n];
            result.row(y)[x] = std::hypot(across, down) / 3;
        }
    }
    return result;
}

}  // namespace

double signalToNoise(const GreyPicture& picture, const GreyPicture& truth) {
    const double square =
        mean(combined(picture, truth, [](float x, float y) { return (x - y) * (x - y); }));
    return 10 * std::log10(kPeak * kPeak / square);
}

double structuralSimilarity(const GreyPicture& picture, const GreyPicture& truth) {
    constexpr std::array exponents{0.0448, 0.2856, 0.3001, 0.2363, 0.1333};
    GreyPicture a = picture, b = truth;
    double result = 1;
    for (std::size_t scale = 0; scale < exponents.size(); ++scale) {
        if (scale > 0) {
            a = halved(a);
            b = halved(b);
        }
        const Similarity found = similarity(a, b);
        const bool isLast = scale + 1 == exponents.size();
        result *= std::pow(std::max(found.structure, 0.0), exponents[scale]);
        if (isLast) result *= std::pow(found.luminance, exponents[scale]);
    }
    return result;
}

double gradientDeviation(const GreyPicture& picture, const GreyPicture& truth) {
    constexpr float stability = 170;
    const GreyPicture similarities = combined(
        gradientMagnitude(halved(picture)), gradientMagnitude(halved(truth)),
        [](float x, float y) { return (2 * x * y + stability) / (x * x + y * y + stability); });
    const auto middle = static_cast<float>(mean(similarities));
    return std::sqrt(mean(combined(similarities, similarities, [middle](float x, float) {
        return (x - middle) * (x - middle);
    })));
}

}  // namespace quillmere::benchmark
