#include "Desktop/CoreImage/PixelBufferNode.h"

#include <bit>
#include <cstring>
#include <utility>
#include <vector>

#include "Desktop/Graphics/SourceOver.h"

namespace quillmere {

// As whole words, which compilers do many of at once.
void swapRedAndBlue(std::uint8_t* to, const std::uint8_t* from, std::size_t pixels) {
    static_assert(std::endian::native == std::endian::little);
    for (std::size_t i = 0; i < pixels; ++i) {
        std::uint32_t pixel;
        std::memcpy(&pixel, from + 4 * i, sizeof pixel);
        pixel = (pixel & 0xFF00FF00u) | ((pixel & 0xFFu) << 16) | ((pixel >> 16) & 0xFFu);
        std::memcpy(to + 4 * i, &pixel, sizeof pixel);
    }
}

PixelBufferNode::PixelBufferNode(CVPixelBufferRef buffer)
    : ImageNode({0, 0, double(buffer->size().width), double(buffer->size().height)}),
      buffer_(std::move(buffer)) {}

void PixelBufferNode::drawInside(const Surface& surface, bool clear) const {
    const Rect& area = surface.area();
    const auto top = static_cast<std::size_t>(extent().maxY() - area.maxY());
    const std::uint8_t* first = buffer_->baseAddress() + top * buffer_->bytesPerRow() +
                                4 * static_cast<std::size_t>(area.x);
    const bool isSwapped = buffer_->format() == CVPixelFormat::bgra8;
    std::vector<std::uint8_t> rgba(isSwapped && !clear ? 4 * surface.width() : 0);
    for (std::size_t y = 0; y < surface.height(); ++y) {
        const std::uint8_t* source = first + y * buffer_->bytesPerRow();
        if (isSwapped) {
            std::uint8_t* swapped = clear ? surface.row(y) : rgba.data();
            swapRedAndBlue(swapped, source, surface.width());
            source = swapped;
        } else if (clear) {
            std::memcpy(surface.row(y), source, 4 * surface.width());
        }
        if (!clear) sourceOver(surface.row(y), source, surface.width());
    }
}

}  // namespace quillmere
