// The Exif block of a PNG file.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "Base/Result.h"

namespace quillmere {

/// The block of the standard `eXIf` chunk (PNG, third edition, 11.3.3.2), or else the one that
/// older programs wrote in hexadecimal as a text named "Raw profile type exif"; from its TIFF
/// header on; empty where the file has neither.
Result<std::vector<std::byte>> exifOfPNG(std::span<const std::byte> file);

/// The file with `exif` in an `eXIf` chunk before the pixels, and in no other place. All other
/// chunks stay byte for byte.
Result<std::vector<std::byte>> pngWithExif(std::span<const std::byte> file,
                                           std::span<const std::byte> exif);

}  // namespace quillmere
