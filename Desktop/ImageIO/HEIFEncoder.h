// HEIC files from libheif itself: libvips can't choose the preset, and takes ten times as long.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "Platform/Graphics/CGImage.h"

namespace quillmere {

/// The bytes of a HEIC file that shows the colours of `bitmap`, without its alpha, and carries the
/// ICC profile `profile`. Nothing if the library fails or memory runs out.
///
/// Sides of up to 16,383 pixels; `quality` in 0 to 1, on a scale where 0.9 is at least as faithful
/// as a JPEG at quality 90. Encodes on all cores; any thread.
std::optional<std::vector<std::byte>> encodeHEIF(const CGImage& bitmap, double quality,
                                                 std::span<const std::byte> profile);

}  // namespace quillmere
