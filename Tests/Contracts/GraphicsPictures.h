// Small pictures written as colours, for tests of the picture ports.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "Platform/Graphics/CGImage.h"

namespace quillmere {

/// A bitmap from 0xRRGGBBAA, premultiplied as it stands, `width` pixels a row, top row first.
/// Bytes between the end of a row and `bytesPerRow` (0: none) are junk.
inline CGImage bitmapOf(int width, const std::vector<std::uint32_t>& colours,
                        std::size_t bytesPerRow = 0) {
    const auto columns = static_cast<std::size_t>(width);
    if (bytesPerRow == 0) bytesPerRow = columns * 4;
    const std::size_t rows = colours.size() / columns;
    // The last row ends with its pixels, so that reading its padding is found.
    const auto bytes = std::make_shared<std::vector<std::uint8_t>>(
        (rows - 1) * bytesPerRow + columns * 4, std::uint8_t{0xa5});
    for (std::size_t i = 0; i < colours.size(); ++i) {
        std::uint8_t* pixel = bytes->data() + i / columns * bytesPerRow + i % columns * 4;
        for (int c = 0; c < 4; ++c)
            pixel[c] = static_cast<std::uint8_t>(colours[i] >> (24 - 8 * c));
    }
    return CGImage({width, static_cast<int>(rows)}, bytesPerRow,
                   std::shared_ptr<const std::uint8_t>(bytes, bytes->data()));
}

inline std::uint32_t colourAt(const CGImage& bitmap, int x, int y) {
    const std::uint8_t* p = bitmap.row(y) + 4 * x;
    return std::uint32_t{p[0]} << 24 | std::uint32_t{p[1]} << 16 | std::uint32_t{p[2]} << 8 | p[3];
}

inline std::vector<std::uint32_t> coloursOf(const CGImage& bitmap) {
    std::vector<std::uint32_t> colours;
    for (int y = 0; y < bitmap.size().height; ++y) {
        for (int x = 0; x < bitmap.size().width; ++x) colours.push_back(colourAt(bitmap, x, y));
    }
    return colours;
}

}  // namespace quillmere
