// Between an Exif block and the dictionary of its tables.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "Base/Result.h"
#include "Platform/ImageIO/CGImageProperties.h"

namespace quillmere {

/// `exif` begins with its TIFF header; an empty one is a block without tables.
///
/// Entries of one text or one number, and those of the GPS table that are three numbers: degrees,
/// minutes and seconds are read as decimal degrees, hours, minutes and seconds as a text. All other
/// entries, such as a camera's private ones, are left out.
Result<CGImageProperties> propertiesOfExif(std::span<const std::byte> exif);

/// `exif` changed as `ImageMetadata::imageWithProperties` says; entries whose value stays the same
/// are not touched. Seconds of arc are stored in steps of 1/1,000,000, and so are metres up to
/// 2,147; beyond that in steps ten times as large for each further digit. A table without the
/// version that the standard demands gets one. An error for entries that the standard doesn't know
/// or can't hold, and where nothing would be left.
Result<std::vector<std::byte>> exifWithProperties(std::span<const std::byte> exif,
                                                  const CGImageProperties& properties);

}  // namespace quillmere
