// Our bitmaps as libvips sees them, and back.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "Desktop/ImageIO/VipsHandles.h"
#include "Platform/Graphics/CGImage.h"

namespace quillmere {

/// Four 8-bit bands over the bitmap's own pixels, which must outlive the image; a bitmap with gaps
/// between its rows is copied. Null if memory ran out.
VipsImageRef vipsImageOf(const CGImage& bitmap);

/// Computes an image of 8-bit bands on this thread and hands out its rows from the top down; false
/// if something fails, after any number of rows.
///
/// Not on the library's own threads: when the last of them fails, version 8.14 may report success,
/// since it reads the result before that thread has ended, and half a picture would pass as whole.
bool pullRows(VipsImage* image, const std::function<void(int y, const std::uint8_t* row)>& take);

/// Computes an image of four 8-bit bands, premultiplied; nothing if memory ran out.
std::optional<CGImage> bitmapOfVipsImage(VipsImage* image);

}  // namespace quillmere
