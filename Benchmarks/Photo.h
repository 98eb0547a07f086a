// Photographs of any size, made from the sample picture.
#pragma once

#include <cstddef>
#include <filesystem>
#include <span>
#include <vector>

#include "Base/Geometry.h"
#include "Base/Result.h"
#include "Desktop/Application/ResourceBundle.h"
#include "Platform/Graphics/UIImage.h"

namespace quillmere::benchmark {

/// The middle of the bundled sample, enlarged to `size` and given the grain of a camera: a picture
/// that is merely enlarged is smooth, and encoders would have too easy a time. Always the same.
Result<UIImage> makePhoto(const ResourceBundle& bundle, PixelSize size);

/// Writes such a photo as a JPEG file.
Result<void> writePhoto(const ResourceBundle& bundle, PixelSize size,
                        const std::filesystem::path& file);

/// What the command line encodes lossy pictures with.
inline constexpr double kLossyQuality = 0.9;

}  // namespace quillmere::benchmark
