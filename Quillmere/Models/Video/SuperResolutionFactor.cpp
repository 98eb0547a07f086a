#include "Quillmere/Models/Video/SuperResolutionFactor.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <string>

#include "Base/Invariant.h"

namespace quillmere {
namespace {

std::int64_t wholePixels(double side) {
    const double whole = std::max(std::ceil(side), 1.0);
    // 2 to the 63rd; a comparison with it refuses what is no number as well.
    if (!std::isfinite(side) || !(whole < 0x1p63)) invariantBroken();
    return static_cast<std::int64_t>(whole);
}

}  // namespace

std::optional<int> resolveSuperResolutionFactor(const VideoToolbox& videoToolbox, Console& console,
                                                double width, double height) {
    std::vector<int> supported = videoToolbox.supportedScaleFactors();
    std::sort(supported.begin(), supported.end());
    if (supported.empty()) return std::nullopt;

    const std::int64_t w = wholePixels(width);
    const std::int64_t h = wholePixels(height);
    const PixelSize limit = videoToolbox.maximumDimensions().value_or(assumedMaximumDimensions);
    const std::string source = "width: " + std::to_string(w) + ", height: " + std::to_string(h);
    console.print("maxWidth: " + std::to_string(limit.width) +
                  ", maxHeight: " + std::to_string(limit.height) + ", " + source);
    if (w > limit.width || h > limit.height) return std::nullopt;

    std::string list;
    for (const int factor : supported) list += (list.empty() ? "" : ", ") + std::to_string(factor);
    console.print("supported: [" + list + "]");

    for (auto factor = supported.rbegin(); factor != supported.rend(); ++factor) {
        // The sides are within the limit, which is an int: no product leaves 64 bits.
        if (w * *factor > limit.width || h * *factor > limit.height) continue;
        const PixelSize frame{static_cast<int>(w), static_cast<int>(h)};
        if (!videoToolbox.makeConfiguration({frame, *factor})) continue;
        console.print("Resolved factor: " + std::to_string(*factor) +
                      ", outputWidth: " + std::to_string(w * *factor) +
                      ", outputHeight: " + std::to_string(h * *factor));
        return *factor;
    }
    console.print("No valid factor found for " + source);
    return std::nullopt;
}

}  // namespace quillmere
