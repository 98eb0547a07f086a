// What a picture file says before its pixels.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Base/Geometry.h"

namespace quillmere {

struct PictureHeader {
    std::string_view typeIdentifier;  // "public.jpeg"
    PixelSize size;                   // upright, both sides above zero
    int orientation = 1;              // as in Exif; 1 where decoding turns the picture upright
    std::vector<std::byte> exif;      // from its TIFF header on; may be empty
    std::string xmp;                  // a packet; may be empty
};

/// Reads the first part of the file only. Nothing for what is no picture of a known format. Any
/// thread.
std::optional<PictureHeader> readPictureHeader(const std::filesystem::path& file);

}  // namespace quillmere
