// Moments and places as the tags of files write them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Base/Date.h"
#include "Platform/Photos/Location.h"

namespace quillmere {

/// "2026:11-23 14:05:09" with any marks between, a "T" or a blank in the middle, fractions of a
/// second, and "Z", "+09:00" or "+0900" at the end. Without a zone it is a time of `zone`, another
/// text such as "+09:00", or else of the user's own zone. Nothing for other texts and for what no
/// calendar has.
std::optional<Date> dateOfText(std::string_view text, std::string_view zone = {});

/// ISO 6709, "+35.6586+139.7454+012.3/", as QuickTime has it. The time of the fix is left alone.
std::optional<Location> locationOfISO6709(std::string_view text);

/// As XMP has them, in degrees: "33,51.6S" or "33,51,36S".
std::optional<double> degreesOfXMP(std::string_view text);

}  // namespace quillmere
