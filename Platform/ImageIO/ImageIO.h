// Picture files in and out, in memory.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "Base/Result.h"
#include "Platform/Graphics/UIImage.h"

namespace quillmere {

/// May be called from any thread. Every failure is an error whose text is a whole sentence.
class ImageIO {
public:
    virtual ~ImageIO() = default;

    /// Reads a picture file of any known format: JPEG, PNG, WebP, HEIC, AVIF, TIFF, JPEG XL, GIF
    /// (its first frame), BMP. The result has scale 1, sRGB colour, 8 bits, transparency kept
    /// premultiplied, and carries the file's orientation as `imageOrientation`.
    virtual Result<UIImage> imageWithData(std::span<const std::byte> data) = 0;

    /// Encodings of the upright picture, tagged as sRGB. `quality` lies in 0 to 1.
    /// Formats without transparency show transparent places on black.
    virtual Result<std::vector<std::byte>> jpegRepresentation(const UIImage& picture,
                                                              double quality) = 0;
    virtual Result<std::vector<std::byte>> pngRepresentation(const UIImage& picture) = 0;
    virtual Result<std::vector<std::byte>> heicRepresentation(const UIImage& picture,
                                                              double quality) = 0;
};

}  // namespace quillmere
