// Between the values of Exiv2 and those of the dictionary.
#pragma once

#include <exiv2/exiv2.hpp>
#include <memory>
#include <optional>

#include "Platform/ImageIO/CGImageProperties.h"

namespace quillmere {

/// Nothing for the kinds that the dictionary doesn't have, and for fractions of zero. Degrees,
/// minutes and seconds become degrees, and hours, minutes and seconds a text.
std::optional<CGImagePropertyValue> valueOfExif(const Exiv2::Exifdatum& entry);

/// Null for a value that the entry `key` can't hold.
std::unique_ptr<Exiv2::Value> exifValueOf(const Exiv2::ExifKey& key,
                                          const CGImagePropertyValue& value);

}  // namespace quillmere
