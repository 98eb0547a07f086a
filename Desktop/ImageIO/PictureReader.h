// From the bytes of a picture file to a bitmap.
#pragma once

#include <cstddef>
#include <span>

#include "Base/Result.h"
#include "Platform/Graphics/UIImage.h"

namespace quillmere {

/// What `ImageIO::imageWithData` promises.
///
/// Pictures with a side over 65,535 pixels or over 500 million pixels are refused before anything
/// is decoded, so that a small file can't fill the memory. A file that ends early or whose data
/// does not decode is an error, never part of a picture. Any thread.
Result<UIImage> readPicture(std::span<const std::byte> data);

}  // namespace quillmere
