// The golden pictures, as the tests read them.
#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

#include "Base/Geometry.h"

namespace quillmere::neural {

/// 8-bit RGBA without gaps; empty where the file can't be read.
struct WebPImage {
    PixelSize size;
    std::vector<std::uint8_t> pixels;

    static WebPImage read(const std::filesystem::path& path);
};

}  // namespace quillmere::neural
