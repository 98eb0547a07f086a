// A block of pixels that a network or a movie frame lives in.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "Base/Geometry.h"

namespace quillmere {

enum class CVPixelFormat {
    rgba8,  // 8-bit R, G, B, A in that byte order, alpha premultiplied, sRGB
};

/// Rows from the top down. Written by whoever made it, before it is handed on; then only read.
class CVPixelBuffer {
public:
    /// Both sides above zero. The contents are not filled in.
    CVPixelBuffer(PixelSize size, CVPixelFormat format)
        : size_(size),
          format_(format),
          bytesPerRow_(static_cast<std::size_t>(size.width) * 4),
          bytes_(new std::uint8_t[bytesPerRow_ * static_cast<std::size_t>(size.height)],
                 std::default_delete<std::uint8_t[]>()) {}

    PixelSize size() const { return size_; }
    CVPixelFormat format() const { return format_; }
    std::size_t bytesPerRow() const { return bytesPerRow_; }
    std::uint8_t* baseAddress() { return bytes_.get(); }
    const std::uint8_t* baseAddress() const { return bytes_.get(); }

private:
    PixelSize size_;
    CVPixelFormat format_;
    std::size_t bytesPerRow_;
    std::shared_ptr<std::uint8_t> bytes_;
};

using CVPixelBufferRef = std::shared_ptr<const CVPixelBuffer>;

}  // namespace quillmere
