// Which of a source's date and place go on to its enlargement.
#pragma once

#include <optional>

#include "Platform/Photos/PHPhotoLibrary.h"
#include "Platform/Photos/PHPickerResult.h"
#include "Quillmere/Models/Services/ImageMetadataHelper.h"

namespace quillmere {

using OriginalMetadata = ImageMetadataHelper::OriginalMetadata;

/// What the library's record of a picked item says; nothing where there is no record. Blocks for
/// the look-up.
inline std::optional<OriginalMetadata> metadataOf(PHPhotoLibrary& library,
                                                  const PHPickerResult& result) {
    if (!result.assetIdentifier) return std::nullopt;
    const auto assets = library.fetchAssetsWithLocalIdentifiers({*result.assetIdentifier});
    if (assets.empty()) return std::nullopt;
    return OriginalMetadata{assets.front().creationDate, assets.front().location};
}

/// What is left after the user's two switches.
inline OriginalMetadata keptOf(const std::optional<OriginalMetadata>& original, bool keepsDate,
                               bool keepsLocation) {
    if (!original) return {};
    return {keepsDate ? original->creationDate : std::nullopt,
            keepsLocation ? original->location : std::nullopt};
}

}  // namespace quillmere
