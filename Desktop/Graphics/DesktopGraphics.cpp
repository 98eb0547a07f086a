#include "Desktop/Graphics/DesktopGraphics.h"

#include <cmath>

#include "Desktop/Graphics/Canvas.h"

namespace quillmere {

std::unique_ptr<GraphicsContext> DesktopGraphics::beginImageContextWithOptions(Size size,
                                                                               bool opaque,
                                                                               double scale) {
    return std::make_unique<Canvas>(size, opaque, scale);
}

std::unique_ptr<GraphicsContext> DesktopGraphics::beginImageContext(Size size) {
    return beginImageContextWithOptions(size, false, 1);
}

std::optional<CGImage> DesktopGraphics::imageInRect(const CGImage& bitmap, const Rect& rect) {
    if (rect.isEmpty() || std::isnan(rect.x) || std::isnan(rect.y)) return {};
    const double left = std::floor(rect.x);
    const double top = std::floor(rect.y);
    const Rect whole{left, top, std::ceil(rect.maxX()) - left, std::ceil(rect.maxY()) - top};
    const Rect cut =
        whole.intersection({0, 0, double(bitmap.size().width), double(bitmap.size().height)});
    if (cut.isEmpty()) return {};
    const std::uint8_t* first = bitmap.row(static_cast<int>(cut.y)) +
                                CGImage::bytesPerPixel * static_cast<std::size_t>(cut.x);
    return CGImage({static_cast<int>(cut.width), static_cast<int>(cut.height)},
                   bitmap.bytesPerRow(),
                   std::shared_ptr<const std::uint8_t>(bitmap.pixels(), first));
}

}  // namespace quillmere
