// JPEG files from libjpeg-turbo itself, which takes our four-byte pixels as they are.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "Base/WorkerPool.h"
#include "Platform/Graphics/CGImage.h"

namespace quillmere {

/// The bytes of a JPEG file that shows the colours of `bitmap`, without its alpha, at full colour
/// resolution, and carries the ICC profile `profile`. Nothing if the library fails or memory runs
/// out.
///
/// Sides of up to 65,500 pixels; `quality` in 1 to 100. Any thread; works on the pool as well, on
/// strips that restart markers keep apart.
std::optional<std::vector<std::byte>> encodeJPEG(const CGImage& bitmap, int quality,
                                                 std::span<const std::byte> profile,
                                                 WorkerPool& pool);

}  // namespace quillmere
