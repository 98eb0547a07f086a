#include "Quillmere/Models/Services/AssetRequest.h"

#include <utility>

#include "Base/Invariant.h"
#include "Quillmere/Models/Services/LocalizedReason.h"

namespace quillmere {

Result<std::vector<std::byte>> encodePicture(ImageIO& imageIO, const UIImage& image,
                                             UserDefaultsHelper::ImageFormat format) {
    using ImageFormat = UserDefaultsHelper::ImageFormat;
    switch (format) {
        case ImageFormat::jpg:
            return imageIO.jpegRepresentation(image, lossyCompressionQuality);
        case ImageFormat::heic:
            return imageIO.heicRepresentation(image, lossyCompressionQuality);
        case ImageFormat::png:
            return imageIO.pngRepresentation(image);
    }
    invariantBroken();
}

void makeAssetRequest(PHChanges& changes, ImageIO& imageIO,
                      const ImageMetadataHelper::Platform& metadata,
                      UserDefaultsHelper::ImageFormat format, const UIImage& image,
                      std::optional<Date> creationDate, const std::optional<Location>& location) {
    auto encoded = encodePicture(imageIO, image, format);
    if (!encoded) {
        changes.creationRequestForAssetFromImage(image);
        return;
    }
    const auto data = ImageMetadataHelper::embedMetadata(*std::move(encoded), creationDate,
                                                         location, format, metadata);
    PHAssetCreationRequest& request = changes.creationRequestForAsset();
    request.addResourceWithType(PHAssetResourceType::photo, data,
                                ImageMetadataHelper::typeIdentifier(format));
    if (creationDate) request.setCreationDate(*creationDate);
    if (location) request.setLocation(*location);
}

std::string saveFailureMessage(const std::optional<Error>& error,
                               const Localization& localization) {
    if (!error) return "Failed to save a image";
    switch (error->code) {
        case PHPhotosErrorAccessUserDenied:
            return localization.localizedString("error.accessUserDenied");
        case PHPhotosErrorNotEnoughSpace:
            return localization.localizedString("error.notEnoughSpace");
        default:
            return localizedReason(*error, localization);
    }
}

}  // namespace quillmere
