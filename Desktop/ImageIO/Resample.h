// Stretching a bitmap to another size.
#pragma once

#include <optional>

#include "Platform/Graphics/CGImage.h"

namespace quillmere {

/// A bitmap stretched to `target` pixels (whole numbers from 1 up, as large as one
/// likes), of which only the part `visible` (whole pixels within that size, origin at the top
/// left) is made. Nothing if memory ran out. Any thread.
///
/// A shorter side is reduced with a Lanczos kernel of three lobes, a longer one is enlarged
/// bicubically, both on premultiplied values; what overshoots is cut to 0 to alpha.
std::optional<CGImage> resampled(const CGImage& bitmap, Size target, const Rect& visible);

}  // namespace quillmere
