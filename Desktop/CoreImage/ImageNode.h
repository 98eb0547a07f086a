// The steps that a lazy image consists of.
#pragma once

#include <memory>

#include "Desktop/CoreImage/Surface.h"
#include "Platform/CoreImage/CoreImage.h"

namespace quillmere {

/// One immutable step over the steps below it, which it shares with other images.
///
/// Drawing visits only the steps whose extent meets the surface, works in rows, and needs a stack
/// and scratch memory in proportion to how deep the image is nested. `std::bad_alloc` may leave
/// it. Many threads may draw one node into different surfaces.
class ImageNode : public CIImage, public std::enable_shared_from_this<ImageNode> {
public:
    Rect extent() const final { return extent_; }
    CIImageRef imageByCroppingToRect(const Rect& rect) const final;
    CIImageRef imageByApplyingTransform(const AffineTransform& transform) const final;
    CIImageRef imageByCompositingOverImage(const CIImageRef& background) const final;

    /// Draws what falls on the surface. `clear` says that the surface is still transparent there,
    /// so that a copy will do; otherwise the image is laid over what the surface shows.
    void draw(const Surface& surface, bool clear) const;

protected:
    /// A broken invariant unless `extent` is in whole pixels that a double counts exactly.
    explicit ImageNode(const Rect& extent);

private:
    /// The surface lies within the extent and is not empty.
    virtual void drawInside(const Surface& surface, bool clear) const = 0;

    Rect extent_;
};

using ImageNodeRef = std::shared_ptr<const ImageNode>;

/// The pixels themselves: extent (0, 0, width, height).
ImageNodeRef makeBitmapNode(CGImage bitmap);

/// Whether all four numbers are whole and small enough for exact sums and products.
bool isWholePixels(const Rect& rect);

}  // namespace quillmere
