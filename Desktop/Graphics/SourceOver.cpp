#include "Desktop/Graphics/SourceOver.h"

#include <algorithm>
#include <cstring>

namespace quillmere {
namespace {

bool isOpaque(const std::uint8_t* pixels, std::size_t count) {
    std::uint8_t alpha = 255;
    for (std::size_t i = 0; i < count; ++i) alpha &= pixels[4 * i + 3];
    return alpha == 255;
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
