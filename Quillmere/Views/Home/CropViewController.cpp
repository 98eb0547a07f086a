#include "Quillmere/Views/Home/CropViewController.h"

#include <algorithm>
#include <cmath>

namespace quillmere {
namespace {

using enum UIImageOrientation;

constexpr std::array turned{up, right, down, left};
constexpr std::array flippedAndTurned{upMirrored, rightMirrored, downMirrored, leftMirrored};

/// The part from `fixed` on that reaches `length` along the handle's direction, or half of it to
/// each side where the handle doesn't move that axis.
struct Span {
    double start;
    double length;
};

Span spanFrom(double fixed, int direction, double length) {
    if (direction > 0) return {fixed, length};
    if (direction < 0) return {fixed - length, length};
    return {fixed - length / 2, length};
}

/// How long a span can get before it leaves 0 to `limit`.
double room(double fixed, int direction, double limit) {
    if (direction > 0) return limit - fixed;
    if (direction < 0) return fixed;
    return 2 * std::min(fixed, limit - fixed);
}

/// What stays where it is while the handle moves: the other end, or the middle.
double fixedPoint(double start, double length, int direction) {
    if (direction > 0) return start;
    if (direction < 0) return start + length;
    return start + length / 2;
}

}  // namespace

CropViewController::CropViewController(const UIImage& picture) : picture_(picture) { reset(); }

Size CropViewController::size() const {
    const Size size{picture_.size().width * picture_.scale(),
                    picture_.size().height * picture_.scale()};
    return quarters_ % 2 == 0 ? size : Size{size.height, size.width};
}

bool CropViewController::isChanged() const {
    return quarters_ != 0 || isFlipped_ || aspectRatio.get() ||
           cropRect.get() != Rect{0, 0, size().width, size().height};
}

void CropViewController::reset() {
    quarters_ = 0;
    isFlipped_ = false;
    aspectRatio.set(std::nullopt);
    show();
    cropRect.set({0, 0, size().width, size().height});
}

void CropViewController::moveBy(double x, double y) {
    Rect rect = cropRect.get();
    rect.x = std::clamp(rect.x + x, 0.0, size().width - rect.width);
    rect.y = std::clamp(rect.y + y, 0.0, size().height - rect.height);
    cropRect.set(rect);
}

void CropViewController::drag(Handle handle, Point to) {
    const Rect rect = cropRect.get();
    const Size limit = size();
    const double fixedX = fixedPoint(rect.x, rect.width, handle.horizontal);
    const double fixedY = fixedPoint(rect.y, rect.height, handle.vertical);
    double width = handle.horizontal == 0 ? rect.width : (to.x - fixedX) * handle.horizontal;
    double height = handle.vertical == 0 ? rect.height : (to.y - fixedY) * handle.vertical;
    double widest = room(fixedX, handle.horizontal, limit.width);
    double highest = room(fixedY, handle.vertical, limit.height);
    double narrowest = std::min(smallestSide, limit.width);
    double lowest = std::min(smallestSide, limit.height);
    if (const auto ratio = aspectRatio.get()) {
        // The side that the user pulls further decides.
        const bool byWidth =
            handle.vertical == 0 || (handle.horizontal != 0 && width >= height * *ratio);
        widest = std::min(widest, highest * *ratio);
        narrowest = std::min(std::max(narrowest, lowest * *ratio), widest);
        width = std::clamp(byWidth ? width : height * *ratio, narrowest, widest);
        height = width / *ratio;
    } else {
        width = std::clamp(width, std::min(narrowest, widest), widest);
        height = std::clamp(height, std::min(lowest, highest), highest);
    }
    const Span across = spanFrom(fixedX, handle.horizontal, width);
    const Span down = spanFrom(fixedY, handle.vertical, height);
    cropRect.set({across.start, down.start, across.length, down.length});
}

Rect CropViewController::fitted(const Rect& rect) const {
    const auto ratio = aspectRatio.get();
    if (!ratio) return rect;
    const double width = std::min(rect.width, rect.height * *ratio);
    const double height = width / *ratio;
    return {rect.x + (rect.width - width) / 2, rect.y + (rect.height - height) / 2, width, height};
}

void CropViewController::setAspectRatio(Size ratio) {
    const bool isFree = ratio.width == 0;
    aspectRatio.set(isFree ? std::nullopt : std::optional(ratio.width / ratio.height));
    cropRect.set(fitted(cropRect.get()));
}

void CropViewController::turn(int quarters) {
    const Rect rect = cropRect.get();
    const Size before = size();
    quarters_ = (quarters_ + quarters) % 4;
    if (const auto ratio = aspectRatio.get()) aspectRatio.set(1 / *ratio);
    show();
    cropRect.set(quarters == 1 ? Rect{before.height - rect.maxY(), rect.x, rect.height, rect.width}
                               : Rect{rect.y, before.width - rect.maxX(), rect.height, rect.width});
}

void CropViewController::rotateClockwise() { turn(1); }

void CropViewController::rotateCounterclockwise() { turn(3); }

void CropViewController::flip() {
    // Turning and then flipping is flipping and then turning the other way.
    quarters_ = (4 - quarters_) % 4;
    isFlipped_ = !isFlipped_;
    show();
    Rect rect = cropRect.get();
    rect.x = size().width - rect.maxX();
    cropRect.set(rect);
}

void CropViewController::show() {
    const auto index = static_cast<std::size_t>(quarters_);
    orientation.set(isFlipped_ ? flippedAndTurned[index] : turned[index]);
}

std::optional<UIImage> CropViewController::uprightPicture(Graphics& graphics) const {
    if (upright_ || picture_.imageOrientation() == up) return upright_ ? upright_ : picture_;
    const Size all = picture_.size();
    const auto canvas = graphics.beginImageContextWithOptions(all, false, picture_.scale());
    canvas->drawInRect(picture_, {0, 0, all.width, all.height});
    upright_ = canvas->imageFromCurrentContext();
    return upright_;
}

std::optional<UIImage> CropViewController::croppedImage(Graphics& graphics) const {
    if (!picture_.cgImage()) return std::nullopt;
    const auto upright = uprightPicture(graphics);
    if (!upright) return std::nullopt;
    const Rect rect = cropRect.get();
    const double left = std::round(rect.x), top = std::round(rect.y);
    const Size kept{std::max(1.0, std::round(rect.maxX()) - left),
                    std::max(1.0, std::round(rect.maxY()) - top)};
    const auto canvas = graphics.beginImageContext(kept);
    canvas->drawInRect(UIImage(*upright->cgImage(), 1, orientation.get()),
                       {-left, -top, size().width, size().height});
    return canvas->imageFromCurrentContext();
}

}  // namespace quillmere
