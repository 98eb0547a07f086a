// The properties of an XMP packet that the Exif tables may lack.
#pragma once

#include <map>
#include <string>

namespace quillmere {

/// Texts by keys such as "exif:GPSLatitude", of those properties that are one text. Empty for a
/// packet that can't be read. Any thread.
std::map<std::string, std::string> propertiesOfXMP(const std::string& packet);

}  // namespace quillmere
