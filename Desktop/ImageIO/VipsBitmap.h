// Our bitmaps as libvips sees them, and back.
#pragma once

#include <optional>

#include "Desktop/ImageIO/VipsHandles.h"
#include "Platform/Graphics/CGImage.h"

namespace quillmere {

/// Four 8-bit bands over the bitmap's own pixels, which must outlive the image; a bitmap with gaps
/// between its rows is copied. Null if memory ran out.
VipsImageRef vipsImageOf(const CGImage& bitmap);

/// Computes an image of four 8-bit bands, premultiplied; nothing if memory ran out.
std::optional<CGImage> bitmapOfVipsImage(VipsImage* image);

}  // namespace quillmere
