// From a picture to the bytes of a file.
#pragma once

#include <cstddef>
#include <vector>

#include "Base/Result.h"
#include "Base/WorkerPool.h"
#include "Platform/Graphics/UIImage.h"

namespace quillmere {

/// Files hold the upright picture and an sRGB profile, and no other metadata. `quality` is cut to
/// 0 to 1. Any thread.

/// Transparent places on black; colour at full resolution, since the edges that an enlarger makes
/// would bleed at half of it; sides of up to 65,500 pixels.
Result<std::vector<std::byte>> writeJPEG(const UIImage& picture, double quality, WorkerPool& pool);

/// 8 bits, with straight alpha only where the picture has transparency.
Result<std::vector<std::byte>> writePNG(const UIImage& picture);

/// Transparent places on black; colour at half resolution, the only kind that players in hardware
/// and phones decode; sides of up to 16,383 pixels.
Result<std::vector<std::byte>> writeHEIC(const UIImage& picture, double quality);

}  // namespace quillmere
