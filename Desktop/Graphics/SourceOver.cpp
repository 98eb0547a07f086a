#include "Desktop/Graphics/SourceOver.h"

#include <algorithm>
#include <cstring>

namespace quillmere {
namespace {

// In whole pixels, which compilers turn into vector instructions; single bytes they do not.
bool isOpaque(const std::uint8_t* pixels, std::size_t count) {
    constexpr std::uint8_t alphaOnly[4] = {0, 0, 0, 255};
    std::uint32_t mask;
    std::memcpy(&mask, alphaOnly, sizeof mask);
    std::uint32_t all = mask;
    for (std::size_t i = 0; i < count; ++i) {
        std::uint32_t pixel;
        std::memcpy(&pixel, pixels + 4 * i, sizeof pixel);
        all &= pixel;
    }
    return all == mask;
}

}  // namespace

void sourceOver(std::uint8_t* destination, const std::uint8_t* source, std::size_t count) {
    if (isOpaque(source, count)) {
        std::memcpy(destination, source, 4 * count);
        return;
    }
    for (std::size_t i = 0; i < count; ++i) {
        const unsigned shown = 255u - source[4 * i + 3];
        for (std::size_t c = 4 * i; c < 4 * i + 4; ++c) {
            // (t + t / 256) / 256 is t / 255, rounded, for all products of two bytes.
            const unsigned t = destination[c] * shown + 128;
            const unsigned sum = source[c] + ((t + (t >> 8)) >> 8);
            destination[c] = static_cast<std::uint8_t>(std::min(sum, 255u));
        }
    }
}

}  // namespace quillmere
