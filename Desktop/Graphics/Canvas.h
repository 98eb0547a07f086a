// A bitmap that is being drawn on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "Platform/Graphics/Graphics.h"

namespace quillmere {

/// The edges of the canvas and of what is drawn lie on whole pixels: a position in points, times
/// the scale, is rounded to nearest (halves up).
///
/// A canvas for which memory ran out, at first or while drawing, gives no image from then on.
class Canvas : public GraphicsContext {
public:
    Canvas(Size points, bool opaque, double scale);

    void drawInRect(const UIImage& picture, const Rect& rect) override;
    std::optional<UIImage> imageFromCurrentContext() override;

private:
    std::uint8_t* row(int y) { return pixels_.get() + static_cast<std::size_t>(y) * bytesPerRow(); }
    std::size_t bytesPerRow() const { return CGImage::bytesPerPixel * std::size_t(size_.width); }
    std::size_t byteCount() const { return bytesPerRow() * std::size_t(size_.height); }

    /// `source` is what the canvas shows in `visible`; its top left pixel lies at `visible`'s.
    void drawRows(const CGImage& source, const Rect& visible);
    /// An image that was taken keeps the pixels it was taken with.
    bool makeWritable();

    PixelSize size_;
    double scale_;
    std::shared_ptr<std::uint8_t[]> pixels_;  // null when memory ran out
    bool shared_ = false;                     // with images that were taken
};

}  // namespace quillmere
