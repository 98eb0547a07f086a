// A picture as a new asset of the photo library.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "Platform/ImageIO/ImageIO.h"
#include "Platform/Localization/Localization.h"
#include "Platform/Photos/PHPhotoLibrary.h"
#include "Quillmere/Models/Services/ImageMetadataHelper.h"

namespace quillmere {

/// JPEG and HEIC, in 0 to 1.
inline constexpr double lossyCompressionQuality = 0.9;

/// The picture's bytes in that format.
Result<std::vector<std::byte>> encodePicture(ImageIO& imageIO, const UIImage& image,
                                             UserDefaultsHelper::ImageFormat format);

/// Creates the asset; to be called inside a change block. Date and place, which the caller has
/// decided to keep, go into the file's tables and onto the library's record. A picture that can't
/// be encoded is left to the library, in a format of its choice and without either.
void makeAssetRequest(PHChanges& changes, ImageIO& imageIO,
                      const ImageMetadataHelper::Platform& metadata,
                      UserDefaultsHelper::ImageFormat format, const UIImage& image,
                      std::optional<Date> creationDate, const std::optional<Location>& location);

/// What to tell the user of a change that failed.
std::string saveFailureMessage(const std::optional<Error>& error, const Localization& localization);

}  // namespace quillmere
