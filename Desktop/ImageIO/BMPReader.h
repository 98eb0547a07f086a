// Windows bitmaps, which the picture library reads only through another one.
#pragma once

#include <cstddef>
#include <span>

#include "Base/Result.h"
#include "Platform/Graphics/UIImage.h"

namespace quillmere {

/// Reads a file that starts with "BM": 1, 4 and 8 bits with a palette, 16, 24 and 32 bits, bit
/// masks with alpha, RLE4 and RLE8, from the bottom up or the top down. Pixels that run-length
/// data skips are transparent. JPEG or PNG inside a BMP is refused.
Result<UIImage> readBMP(std::span<const std::byte> data);

}  // namespace quillmere
