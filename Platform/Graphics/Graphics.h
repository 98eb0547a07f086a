// Drawing into bitmaps, and cutting them.
#pragma once

#include <memory>
#include <optional>

#include "Base/Geometry.h"
#include "Platform/Graphics/UIImage.h"

namespace quillmere {

/// An open canvas, which closes when it goes. Used by one thread.
class GraphicsContext {
public:
    virtual ~GraphicsContext() = default;

    /// Draws the upright picture into `rect` (points, origin at the top left), source over,
    /// clipped to the canvas. At its own size on whole pixels it is copied exactly; enlarging is
    /// smooth and reducing is antialiased. Edges of `rect` between pixels are rounded to the
    /// nearest, halves up; a side under one pixel counts as one, so that a line never vanishes.
    /// A rectangle that is not finite draws nothing.
    virtual void drawInRect(const UIImage& picture, const Rect& rect) = 0;

    /// What has been drawn so far, with the canvas's scale; nothing if memory ran out.
    virtual std::optional<UIImage> imageFromCurrentContext() = 0;
};

/// May be called from any thread.
class Graphics {
public:
    virtual ~Graphics() = default;

    /// Opens a canvas of `size` points at `scale` pixels a point, transparent unless `opaque`
    /// (then black). Sides are rounded to whole pixels; one that would have none gets one. Never
    /// null.
    virtual std::unique_ptr<GraphicsContext> beginImageContextWithOptions(Size size, bool opaque,
                                                                          double scale) = 0;

    /// The same with `opaque` false and `scale` 1.
    virtual std::unique_ptr<GraphicsContext> beginImageContext(Size size) = 0;

    /// The part of a bitmap inside `rect` (pixels, origin at the top left, rounded outwards to
    /// whole pixels, cut to the bitmap); nothing where they have no pixel in common.
    virtual std::optional<CGImage> imageInRect(const CGImage& bitmap, const Rect& rect) = 0;
};

}  // namespace quillmere
