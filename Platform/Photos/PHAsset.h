// The photo library's record of one picture or video.
#pragma once

#include <optional>
#include <string>

#include "Base/Date.h"
#include "Base/Geometry.h"
#include "Platform/Photos/Location.h"

namespace quillmere {

enum class PHAssetMediaType { image = 1, video = 2 };

/// A snapshot; the library may have moved on since.
struct PHAsset {
    /// Stays the same for as long as the library keeps the asset.
    std::string localIdentifier;
    PHAssetMediaType mediaType = PHAssetMediaType::image;
    /// Upright; 0 by 0 where it is not known.
    PixelSize pixelSize{0, 0};
    std::optional<Date> creationDate;
    std::optional<Location> location;

    friend bool operator==(const PHAsset&, const PHAsset&) = default;
};

}  // namespace quillmere
