// The Exif block of a JPEG file.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "Base/Result.h"

namespace quillmere {

/// The first Exif block, from its TIFF header on; empty where the file has none.
Result<std::vector<std::byte>> exifOfJPEG(std::span<const std::byte> file);

/// The file with `exif` as its only Exif block, right behind the JFIF header as the standards have
/// it. All other segments and the coded picture stay byte for byte, which Exiv2's own writer does
/// not give: it turns segments round, writes the XMP packet anew and lengthens comments.
/// An error also for a block of over 65,527 bytes, the most that a segment holds.
Result<std::vector<std::byte>> jpegWithExif(std::span<const std::byte> file,
                                            std::span<const std::byte> exif);

}  // namespace quillmere
