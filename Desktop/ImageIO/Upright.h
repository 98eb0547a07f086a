// Turning a stored bitmap to how it is seen.
#pragma once

#include <optional>

#include "Platform/Graphics/UIImage.h"

namespace quillmere {

/// The bitmap turned as `orientation` says; one that is upright already is shared, not copied.
/// Nothing if memory ran out. Any thread.
std::optional<CGImage> uprightBitmap(const CGImage& bitmap, UIImageOrientation orientation);

}  // namespace quillmere
