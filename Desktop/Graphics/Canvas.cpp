#include "Desktop/Graphics/Canvas.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <new>

#include "Desktop/Graphics/SourceOver.h"
#include "Desktop/ImageIO/Resample.h"
#include "Desktop/ImageIO/Upright.h"

namespace quillmere {
namespace {

// Start and length in whole pixels, the length at least one.
struct Span {
    double start;
    double length;
};

Span wholePixels(double start, double length, double scale) {
    const double first = std::floor(start * scale + 0.5);
    const double last = std::floor((start + length) * scale + 0.5);
    return {first, std::max(1.0, last - first)};
}

int pixelSide(double points, double scale) {
    constexpr double most = std::numeric_limits<int>::max();
    return static_cast<int>(std::min(most, wholePixels(0, points, scale).length));
}

Rect wholePixels(const Rect& points, double scale) {
    const Span across = wholePixels(points.x, points.width, scale);
    const Span down = wholePixels(points.y, points.height, scale);
    return {across.start, down.start, across.length, down.length};
}

bool isFinite(const Rect& rect) {
    return std::isfinite(rect.x) && std::isfinite(rect.y) && std::isfinite(rect.maxX()) &&
           std::isfinite(rect.maxY());
}

std::shared_ptr<std::uint8_t[]> allocate(std::size_t bytes) {
    return std::shared_ptr<std::uint8_t[]>(new (std::nothrow) std::uint8_t[bytes]);
}

}  // namespace

Canvas::Canvas(Size points, bool opaque, double scale)
    : size_{pixelSide(points.width, scale), pixelSide(points.height, scale)}, scale_(scale) {
    constexpr std::size_t mostBytes = std::numeric_limits<std::ptrdiff_t>::max();
    if (std::size_t(size_.height) > mostBytes / bytesPerRow()) return;
    pixels_ = allocate(byteCount());
    if (!pixels_) return;
    std::memset(pixels_.get(), 0, byteCount());
    for (std::size_t i = 3; opaque && i < byteCount(); i += 4) pixels_[i] = 255;
}

void Canvas::drawInRect(const UIImage& picture, const Rect& rect) {
    const Rect target = wholePixels(rect, scale_);
    if (!picture.cgImage() || !isFinite(target)) return;
    const Rect visible = target.intersection({0, 0, double(size_.width), double(size_.height)});
    if (visible.isEmpty() || !makeWritable()) return;

    std::optional<CGImage> source = uprightBitmap(*picture.cgImage(), picture.imageOrientation());
    const Rect part{visible.x - target.x, visible.y - target.y, visible.width, visible.height};
    if (source && source->size().width == target.width && source->size().height == target.height) {
        const std::uint8_t* first =
            source->row(static_cast<int>(part.y)) + 4 * static_cast<std::size_t>(part.x);
        source = CGImage({static_cast<int>(part.width), static_cast<int>(part.height)},
                         source->bytesPerRow(),
                         std::shared_ptr<const std::uint8_t>(source->pixels(), first));
    } else if (source) {
        source = resampled(*source, {target.width, target.height}, part);
    }
    if (!source) {
        pixels_.reset();
        return;
    }
    drawRows(*source, visible);
}

void Canvas::drawRows(const CGImage& source, const Rect& visible) {
    const auto left = CGImage::bytesPerPixel * static_cast<std::size_t>(visible.x);
    const int top = static_cast<int>(visible.y);
    for (int y = 0; y < source.size().height; ++y) {
        sourceOver(row(top + y) + left, source.row(y), std::size_t(source.size().width));
    }
}

bool Canvas::makeWritable() {
    if (!pixels_ || !shared_) return pixels_ != nullptr;
    auto copy = allocate(byteCount());
    if (copy) std::memcpy(copy.get(), pixels_.get(), byteCount());
    pixels_ = std::move(copy);
    shared_ = false;
    return pixels_ != nullptr;
}

std::optional<UIImage> Canvas::imageFromCurrentContext() {
    if (!pixels_) return {};
    shared_ = true;
    return UIImage(
        CGImage(size_, bytesPerRow(), std::shared_ptr<const std::uint8_t>(pixels_, pixels_.get())),
        scale_);
}

}  // namespace quillmere
