// The one bitmap format between the picture rooms.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "Base/Geometry.h"

namespace quillmere {

/// An immutable bitmap: 8-bit RGBA in that byte order, alpha premultiplied, sRGB, top row first.
///
/// A copy shares the pixels; a cut may share them with the bitmap that it was cut from.
/// Safe to read from any thread.
class CGImage {
public:
    static constexpr std::size_t bytesPerPixel = 4;

    /// `pixels` points at the top left pixel and keeps the whole buffer alive; both sides of
    /// `size` are above zero, `bytesPerRow` >= 4 * width.
    CGImage(PixelSize size, std::size_t bytesPerRow, std::shared_ptr<const std::uint8_t> pixels)
        : size_(size), bytesPerRow_(bytesPerRow), pixels_(std::move(pixels)) {}

    PixelSize size() const { return size_; }
    std::size_t bytesPerRow() const { return bytesPerRow_; }
    /// The `y`-th row from the top; 4 * width bytes are readable.
    const std::uint8_t* row(int y) const {
        return pixels_.get() + static_cast<std::size_t>(y) * bytesPerRow_;
    }
    const std::shared_ptr<const std::uint8_t>& pixels() const { return pixels_; }

private:
    PixelSize size_;
    std::size_t bytesPerRow_;
    std::shared_ptr<const std::uint8_t> pixels_;
};

}  // namespace quillmere
