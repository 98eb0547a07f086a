#include "Quillmere/Views/Home/ImagePicker.h"

namespace quillmere {

void ImagePicker::didFinishPicking(const std::vector<PHPickerResult>& results) {
    bindings_.isPresented.set(false);
    if (results.empty()) return;
    const auto provider = results.front().itemProvider;
    // Before the load: whoever hears of the picture looks at the picks.
    bindings_.pickerResults.set(results);
    auto& image = bindings_.image;
    if (provider->hasItemConformingToTypeIdentifier(UTTypeWebP)) {
        provider->loadDataRepresentationForTypeIdentifier(
            UTTypeWebP, [&image, &imageIO = imageIO_,
                         owner = owner_](const Result<std::vector<std::byte>>& data) {
                if (!data) return;
                if (const auto picture = imageIO.imageWithData(*data)) image.set(*picture);
            });
    } else if (provider->canLoadObjectOfClassUIImage()) {
        provider->loadObjectOfClassUIImage(
            [&image, owner = owner_](const Result<UIImage>& picture) {
                image.set(picture ? std::optional(*picture) : std::nullopt);
            });
    }
}

}  // namespace quillmere
