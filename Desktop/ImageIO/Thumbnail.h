// Small copies of picture files, made without decoding more of them than needed.
#pragma once

#include <filesystem>

#include "Base/Result.h"
#include "Platform/Graphics/CGImage.h"

namespace quillmere {

/// Upright, with sides of at most `side` pixels and never larger than the picture. Any thread.
Result<CGImage> thumbnailOfFile(const std::filesystem::path& file, int side);

}  // namespace quillmere
