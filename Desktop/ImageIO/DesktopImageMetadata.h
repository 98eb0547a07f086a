// Metadata tables on the desktop: Exiv2 for the Exif block, our own hands for the files around it.
#pragma once

#include "Platform/ImageIO/ImageMetadata.h"

namespace quillmere {

/// Errors have the domain "quillmere.imageio" and the codes of `ImageIOErrorCode`. Needs memory for
/// the file once more, for a HEIC twice.
class DesktopImageMetadata final : public ImageMetadata {
public:
    Result<CGImageProperties> propertiesOfImage(std::span<const std::byte> data) override;
    Result<std::vector<std::byte>> imageWithProperties(
        std::span<const std::byte> data, std::string_view typeIdentifier,
        const CGImageProperties& properties) override;
};

}  // namespace quillmere
