#include "Benchmarks/GreyPicture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "Base/WorkerPool.h"
#include "Desktop/FileManager/DesktopFileManager.h"
#include "Desktop/ImageIO/DesktopImageIO.h"

namespace quillmere::benchmark {
namespace {

float catmullRom(float x) {
    x = std::abs(x);
    if (x < 1) return (1.5f * x - 2.5f) * x * x + 1;
    if (x < 2) return ((-0.5f * x + 2.5f) * x - 4) * x + 2;
    return 0;
}

double lanczos(double x) {
    constexpr double lobes = 3;
    if (std::abs(x) < 1e-9) return 1;
    if (std::abs(x) >= lobes) return 0;
    const double angle = std::numbers::pi * x;
    return lobes * std::sin(angle) * std::sin(angle / lobes) / (angle * angle);
}

/// Reduces the rows' length.
GreyPicture narrowed(const GreyPicture& picture, int factor, Reduction reduction) {
    GreyPicture result({picture.size.width / factor, picture.size.height});
    const int reach = reduction == Reduction::area ? 0 : 3 * factor;
    std::vector<float> weights;
    float sum = 0;
    for (int n = -reach; n < factor + reach; ++n) {
        const double distance = (n + 0.5) / factor - 0.5;
        weights.push_back(reduction == Reduction::area ? 1.0f
                                                       : static_cast<float>(lanczos(distance)));
        sum += weights.back();
    }
    for (int y = 0; y < result.size.height; ++y) {
        for (int x = 0; x < result.size.width; ++x) {
            float value = 0;
            for (std::size_t n = 0; n < weights.size(); ++n) {
                value += weights[n] * picture.at(x * factor - reach + static_cast<int>(n), y);
            }
            result.row(y)[x] = value / sum;
        }
    }
    return result;
}

/// Makes the rows longer.
GreyPicture widened(const GreyPicture& picture, int factor) {
    constexpr int lobes = 3;
    GreyPicture result({picture.size.width * factor, picture.size.height});
    for (int x = 0; x < result.size.width; ++x) {
        const double at = (x + 0.5) / factor - 0.5;
        const int first = static_cast<int>(std::floor(at)) - lobes + 1;
        std::array<float, 2 * lobes> weights{};
        float sum = 0;
        for (std::size_t n = 0; n < weights.size(); ++n) {
            weights[n] = static_cast<float>(lanczos(first + static_cast<int>(n) - at));
            sum += weights[n];
        }
        for (int y = 0; y < result.size.height; ++y) {
            float value = 0;
            for (std::size_t n = 0; n < weights.size(); ++n) {
                value += weights[n] * picture.at(first + static_cast<int>(n), y);
            }
            result.row(y)[x] = value / sum;
        }
    }
    return result;
}

GreyPicture transposed(const GreyPicture& picture) {
    GreyPicture result({picture.size.height, picture.size.width});
    for (int y = 0; y < picture.size.height; ++y) {
        for (int x = 0; x < picture.size.width; ++x) result.row(x)[y] = picture.row(y)[x];
    }
    return result;
}

}  // namespace

float GreyPicture::at(int x, int y) const {
    return row(std::clamp(y, 0, size.height - 1))[std::clamp(x, 0, size.width - 1)];
}

float GreyPicture::at(float x, float y) const {
    const int left = static_cast<int>(std::floor(x)), top = static_cast<int>(std::floor(y));
    float sum = 0;
    for (int dy = -1; dy <= 2; ++dy) {
        float line = 0;
        for (int dx = -1; dx <= 2; ++dx) {
            line += catmullRom(static_cast<float>(left + dx) - x) * at(left + dx, top + dy);
        }
        sum += catmullRom(static_cast<float>(top + dy) - y) * line;
    }
    return sum;
}

Result<GreyPicture> loadGrey(const std::filesystem::path& file) {
    const auto data = DesktopFileManager().contentsOfFile(file);
    if (!data) return data.error();
    WorkerPool pool;
    const auto picture = DesktopImageIO(pool).imageWithData(*data);
    if (!picture) return picture.error();
    const CGImage& image = *picture->cgImage();
    GreyPicture grey(image.size());
    for (int y = 0; y < grey.size.height; ++y) {
        const std::uint8_t* pixel = image.row(y);
        for (int x = 0; x < grey.size.width; ++x, pixel += CGImage::bytesPerPixel) {
            grey.row(y)[x] = 0.299f * static_cast<float>(pixel[0]) +
                             0.587f * static_cast<float>(pixel[1]) +
                             0.114f * static_cast<float>(pixel[2]);
        }
    }
    return grey;
}

GreyPicture reduced(const GreyPicture& picture, int factor, Reduction reduction) {
    return transposed(
        narrowed(transposed(narrowed(picture, factor, reduction)), factor, reduction));
}

GreyPicture enlarged(const GreyPicture& picture, int factor) {
    return transposed(widened(transposed(widened(picture, factor)), factor));
}

GreyPicture rounded(GreyPicture picture) {
    for (float& pixel : picture.pixels) pixel = std::round(std::clamp(pixel, 0.0f, 255.0f));
    return picture;
}

}  // namespace quillmere::benchmark
