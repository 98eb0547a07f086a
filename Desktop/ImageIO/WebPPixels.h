// The pixels of a WebP file, from its own library.
#pragma once

#include <cstddef>
#include <span>

#include "Desktop/ImageIO/VipsHandles.h"

namespace quillmere {

/// The first frame as four 8-bit bands with straight alpha, and the colour profile of `header`;
/// null if the data is incomplete or wrong.
///
/// libvips reads the header well, but would decode on several threads at once, whose failure it
/// may take for success (8.14: the result is read before the last thread has ended).
VipsImageRef webPPixels(std::span<const std::byte> data, VipsImage* header);

}  // namespace quillmere
