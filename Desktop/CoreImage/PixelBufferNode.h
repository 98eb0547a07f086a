// A pixel buffer as an image, read only where it is drawn.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Desktop/CoreImage/ImageNode.h"

namespace quillmere {

/// From one order of channels to the other. `to` and `from` may be the same.
void swapRedAndBlue(std::uint8_t* to, const std::uint8_t* from, std::size_t pixels);

/// Extent (0, 0, width, height). The buffer is an RGBA or BGRA one.
class PixelBufferNode final : public ImageNode {
public:
    explicit PixelBufferNode(CVPixelBufferRef buffer);

    const CVPixelBuffer& buffer() const { return *buffer_; }

private:
    void drawInside(const Surface& surface, bool clear) const override;

    CVPixelBufferRef buffer_;
};

}  // namespace quillmere
