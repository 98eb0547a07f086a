// Telling a JPEG with an oddity from one that has lost pixels.
#pragma once

#include <cstddef>
#include <span>

namespace quillmere {

/// Whether all coded data of a JPEG decodes without loss. Junk between segments, an unknown JFIF
/// version and the like are no loss; missing or broken data is, even where a decoder would paint
/// grey over it and go on. Costs about half a decode.
bool isJPEGDataWhole(std::span<const std::byte> data);

}  // namespace quillmere
