#include "Quillmere/Views/Home/VideoPicker.h"

#include "Quillmere/Models/Services/LocalizedReason.h"

namespace quillmere {

void VideoPicker::didFinishPicking(const std::vector<PHPickerResult>& results) const {
    isPresented.set(false);
    if (results.empty()) return;
    const auto provider = results.front().itemProvider;
    const auto types = provider->registeredTypeIdentifiers();
    if (types.empty() || !provider->hasItemConformingToTypeIdentifier(types.front())) return;
    provider->loadFileRepresentationForTypeIdentifier(
        types.front(), [picker = *this](const Result<std::filesystem::path>& url) {
            if (!url) return;
            const auto copy = picker.copied(*url);
            picker.dispatch.mainQueue().async([picker, copy] {
                if (copy) {
                    picker.videoURL.set(*copy);
                } else {
                    picker.alert.set(AlertTypes::defaultButton(
                        localizedReason(copy.error(), picker.localization), std::nullopt));
                }
            });
        });
}

Result<std::filesystem::path> VideoPicker::copied(const std::filesystem::path& url) const {
    const auto target = videoFiles.makeOutputUrl(url.filename().string(), url.extension().string());
    if (const auto done = fileManager.copyItem(url, target); !done) return done.error();
    return target;
}

}  // namespace quillmere
