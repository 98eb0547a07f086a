// What stands before the pixels of a Windows bitmap.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "Base/Geometry.h"

namespace quillmere {

enum class BMPCoding { plain, rle8, rle4 };

/// The bits of a pixel that belong to one channel; no bits at all for a channel that is absent.
struct BMPMask {
    std::uint32_t bits = 0;

    /// The channel of `pixel`, stretched to 0 to 255; 0 for an absent one.
    std::uint8_t channel(std::uint32_t pixel) const;
};

struct BMPHeader {
    PixelSize size;  // both above zero
    bool topDown = false;
    int bitsPerPixel = 0;  // 1, 4, 8: index into `palette`; 16, 24, 32: through the masks
    BMPCoding coding = BMPCoding::plain;
    std::size_t pixelOffset = 0;   // from the start of the file; may lie past its end
    std::array<BMPMask, 4> masks;  // R, G, B, A
    std::vector<std::array<std::uint8_t, 3>> palette;  // R, G, B
};

/// Nothing if the header contradicts itself, ends early or names a coding that is not read.
std::optional<BMPHeader> parseBMPHeader(std::span<const std::byte> data);

}  // namespace quillmere
