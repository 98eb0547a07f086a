// The Exif block of a HEIC file's picture.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "Base/Result.h"

namespace quillmere {

/// The Exif item of the primary picture, from its TIFF header on; empty where the file has none.
Result<std::vector<std::byte>> exifOfHEIF(std::span<const std::byte> file);

/// The file with `exif` as the Exif of its primary picture. Nothing else of what the file says
/// changes, and the data of all other items stays byte for byte: the `meta` box is written anew
/// with all that it held, and what follows it moves. A former block is overwritten with zeros, so
/// that nobody can read it any more.
///
/// (Exiv2 can't write this format, and libheif would write all items anew.)
///
/// An error for files that are damaged, that are sequences of pictures rather than pictures, that
/// have several Exif blocks for the picture, or whose Exif lies where another item lies.
Result<std::vector<std::byte>> heifWithExif(std::span<const std::byte> file,
                                            std::span<const std::byte> exif);

}  // namespace quillmere
