// A bitmap while it is being filled.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

#include "Base/Result.h"
#include "Platform/Graphics/CGImage.h"

namespace quillmere {

/// The pixels of one picture, writable until they are handed on as a `CGImage`.
class BitmapBuffer {
public:
    /// Nothing if memory ran out. The contents are not filled in.
    static std::optional<BitmapBuffer> create(PixelSize size);

    /// The same for a size that a file claims: refuses what no honest picture has, a side over
    /// 65,535 pixels or over 500 million pixels.
    static Result<BitmapBuffer> createForFile(PixelSize size);

    std::uint8_t* row(int y) { return pixels_.get() + static_cast<std::size_t>(y) * bytesPerRow(); }
    CGImage bitmap() && {
        return CGImage(size_, bytesPerRow(),
                       std::shared_ptr<const std::uint8_t>(pixels_, pixels_.get()));
    }

private:
    BitmapBuffer(PixelSize size, std::shared_ptr<std::uint8_t[]> pixels)
        : size_(size), pixels_(std::move(pixels)) {}

    std::size_t bytesPerRow() const { return 4 * static_cast<std::size_t>(size_.width); }

    PixelSize size_;
    std::shared_ptr<std::uint8_t[]> pixels_;
};

/// Writes one pixel of straight R, G, B and alpha in the one format between the picture rooms.
inline void storePremultiplied(std::uint8_t* target, const std::uint8_t* colour,
                               std::uint8_t alpha) {
    for (int c = 0; c < 3; ++c) {
        target[c] = static_cast<std::uint8_t>((colour[c] * alpha + 127) / 255);
    }
    target[3] = alpha;
}

}  // namespace quillmere
