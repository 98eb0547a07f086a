// JPEG files from libjpeg-turbo itself, which takes our four-byte pixels as they are.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "Platform/Graphics/CGImage.h"

namespace quillmere {

/// The bytes of a JPEG file that shows the colours of `bitmap`, without its alpha, at full colour
/// resolution, and carries the ICC profile `profile`. Nothing if the library fails or memory runs
/// out.
///
/// Sides of up to 65,500 pixels; `quality` in 1 to 100. Any thread.
std::optional<std::vector<std::byte>> encodeJPEG(const CGImage& bitmap, int quality,
                                                 std::span<const std::byte> profile);

}  // namespace quillmere
