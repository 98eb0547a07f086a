#include "Quillmere/Views/Detail/VideoPreviewViewModel.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "Quillmere/Models/Services/AnalyticsEvents.h"
#include "Quillmere/Models/Services/LocalizedReason.h"
#include "Quillmere/Models/Services/PreferenceKeys.h"
#include "Quillmere/Views/Common/TopViewController.h"

namespace quillmere {
namespace {

constexpr double usualSide = 1024;          // pixels
constexpr std::int64_t highLimitIndex = 1;  // of `resolutionLimitIndexKey`

}  // namespace

double VideoPreviewViewModel::rotation() const {
    const AVAssetRef asset = ports_.avFoundation.assetWithURL(videoUrl_);
    const auto tracks = asset->tracksWithMediaType(AVMediaType::video);
    if (tracks.empty()) return 0;
    const AffineTransform upright = tracks.front()->preferredTransform();
    return std::atan2(upright.b, upright.a) * 180 / std::numbers::pi;
}

void VideoPreviewViewModel::saveTapped() {
    ports_.photoLibrary.performChanges(
        [url = videoUrl_](PHChanges& changes) {
            changes.creationRequestForAssetFromVideoAtFileURL(url);
        },
        [self = shared_from_this()](bool success, const std::optional<Error>& error) {
            self->ports_.dispatch.mainQueue().async(
                [self, success, error] { self->saved(success, error); });
        });
}

void VideoPreviewViewModel::saved(bool success, const std::optional<Error>& error) {
    if (success) confirmation.set(ports_.localization.localizedString("CompletedToSave"));
    if (!error) return;
    const bool tooLarge = isLongerThanUsual();
    if (error->code != PHPhotosErrorInvalidResource) return showError(*error, tooLarge);
    isTooLarge_ = tooLarge;
    ports_.photoLibrary.UISaveVideoAtPathToSavedPhotosAlbum(
        videoUrl_, [self = shared_from_this()](const std::optional<Error>& again) {
            self->savedTheOlderWay(again);
        });
}

void VideoPreviewViewModel::savedTheOlderWay(const std::optional<Error>& error) {
    if (error) return showError(*error, isTooLarge_);
    alert.set(AlertTypes::defaultButton(ports_.localization.localizedString("CompletedToSave"),
                                        std::nullopt));
}

void VideoPreviewViewModel::showError(const Error& error, bool tooLarge) {
    std::string message = localizedReason(error, ports_.localization);
    if (tooLarge) message += "\n" + ports_.localization.localizedString("MayBeTooLargeError");
    alert.set(AlertTypes::defaultButton(ports_.localization.localizedString("Error"), message));
}

bool VideoPreviewViewModel::isLongerThanUsual() const {
    const auto asset = ports_.avFoundation.assetWithURL(videoUrl_);
    const auto tracks = asset->tracksWithMediaType(AVMediaType::video);
    if (tracks.empty()) return false;
    const Size size = tracks.front()->naturalSize();
    return std::max(size.width, size.height) > usualSide &&
           ports_.userDefaults.integerForKey(resolutionLimitIndexKey) == highLimitIndex;
}

void VideoPreviewViewModel::shareTapped() {
    ports_.analytics.logEventWithName(eventName("saved_shareVideo"), std::nullopt);
    UIViewController* top = topViewController(ports_.application, ports_.crashLog);
    if (top) ports_.activities.present({videoUrl_}, *top);
}

}  // namespace quillmere
