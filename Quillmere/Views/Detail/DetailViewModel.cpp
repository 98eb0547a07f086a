#include "Quillmere/Views/Detail/DetailViewModel.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

#include "Base/Invariant.h"
#include "Quillmere/Models/Services/AnalyticsEvents.h"
#include "Quillmere/Models/Services/AssetRequest.h"
#include "Quillmere/Models/Services/Notifications.h"
#include "Quillmere/Models/Services/PreferenceCounter.h"
#include "Quillmere/Models/Services/PreferenceKeys.h"
#include "Quillmere/Models/Video/SuperResolutionContext.h"
#include "Quillmere/Models/Video/SuperResolutionFactor.h"
#include "Quillmere/Views/Detail/BatchSave.h"
#include "Quillmere/Views/Detail/VideoJob.h"

namespace quillmere {
namespace {

constexpr std::chrono::seconds untilConvertAd{1};

std::size_t slotOf(EnhanceStyle style) {
    const auto slot = static_cast<std::size_t>(style);
    if (slot >= allEnhanceStyles.size()) invariantBroken();
    return slot;
}

AnalyticsParameters parametersOf(EnhanceStyle style) {
    return {{"Style", std::to_string(static_cast<int>(style))}};
}

}  // namespace

DetailViewModel::DetailViewModel(const DetailPorts& ports) : ports_(ports) {}

DetailViewModel::~DetailViewModel() = default;

void DetailViewModel::prepare(const UIImage& picture, std::optional<std::filesystem::path> videoUrl,
                              std::optional<std::vector<PHPickerResult>> results) {
    originalImage = picture;
    setSlot(EnhanceStyle::original, picture);
    originalVideoUrl = std::move(videoUrl);
    pickerResults = std::move(results);
    originalMetadata = pickerResults && !pickerResults->empty()
                           ? metadataOf(ports_.photoLibrary, pickerResults->front())
                           : std::nullopt;
    ports_.ads->loadSaveAd();
    ports_.analytics.logEventWithName(eventName("ShowDetail"), std::nullopt);
}

void DetailViewModel::convert() {
    const EnhanceStyle style = selectedStyle.get();
    if (style != EnhanceStyle::rapidHQ) rapidHQExpectedSize.set(std::nullopt);
    if (style == EnhanceStyle::rapidHQ) {
        refreshRapidHQExpectedSize();
        return;  // a video is enlarged when it is saved
    }
    if (hasConvertedImage()) return;

    isConverting.set(true);
    imageConversionProgress.set(0);
    ports_.analytics.logEventWithName(eventName("TryConvert"), parametersOf(style));
    if (style != EnhanceStyle::original) {
        ports_.dispatch.mainQueue().asyncAfter(untilConvertAd,
                                               [ads = ports_.ads] { ads->showConvertAd(); });
    }
    if (!originalImage) invariantBroken();

    // The run keeps the model to its end, even when the screen has gone; its progress does not.
    ports_.dispatch.globalQueue(QualityOfService::userInitiated)
        .async([self = shared_from_this(), style, image = *originalImage] {
            const auto progress = [weak = std::weak_ptr(self)](float fraction) {
                if (const auto model = weak.lock()) model->imageConversionProgress.set(fraction);
            };
            self->ports_.enhanceImage(
                style, image, progress,
                [self](std::optional<UIImage> picture, std::optional<std::string> text) {
                    self->ports_.dispatch.mainQueue().async(
                        [self, picture = std::move(picture), text = std::move(text)] {
                            self->finishConversion(picture, text);
                        });
                });
        });
}

void DetailViewModel::finishConversion(const std::optional<UIImage>& picture,
                                       const std::optional<std::string>& text) {
    isConverting.set(false);
    imageConversionProgress.set(0);
    if (picture) {
        const EnhanceStyle style = selectedStyle.get();
        ports_.analytics.logEventWithName(eventName("ConvertSuccess"), parametersOf(style));
        setSlot(style, *picture);
    } else if (text) {
        showError(*text);
    }
}

void DetailViewModel::resetConvertedImages() {
    Images images;
    images[slotOf(EnhanceStyle::original)] = originalImage;
    convertedImages.set(std::move(images));
    rapidHQExpectedSize.set(std::nullopt);
}

bool DetailViewModel::hasConvertedImage() const {
    return convertedImages.get()[slotOf(selectedStyle.get())].has_value();
}

void DetailViewModel::refreshRapidHQExpectedSize() {
    const auto size =
        originalVideoUrl && ports_.device.systemVersion() >= superResolutionSystemVersion
            ? sizeOfVideo()
            : std::nullopt;
    const auto factor =
        size ? ports_.resolveSuperResolutionFactor(size->width, size->height) : std::nullopt;
    if (!factor) return rapidHQExpectedSize.set(std::nullopt);
    rapidHQExpectedSize.set(Size{size->width * *factor, size->height * *factor});
}

std::optional<Size> DetailViewModel::sizeOfVideo() {
    if (originalVideoSize) return originalVideoSize;
    const auto tracks = ports_.avFoundation.assetWithURL(*originalVideoUrl)
                            ->tracksWithMediaType(AVMediaType::video);
    if (tracks.empty()) return std::nullopt;
    const Size natural = tracks.front()->naturalSize();
    const Size size{std::abs(natural.width), std::abs(natural.height)};
    if (size.width != 0 && size.height != 0) originalVideoSize = size;
    return size;
}

std::optional<RapidHQSizeLimits> DetailViewModel::rapidHQSizeLimits() {
    const bool isAsked = selectedStyle.get() == EnhanceStyle::rapidHQ &&
                         !rapidHQExpectedSize.get() && originalVideoUrl && ports_.video;
    const auto size = isAsked ? sizeOfVideo() : std::nullopt;
    if (!size || ports_.device.systemVersion() < superResolutionSystemVersion) return {};
    const VideoToolbox& scaler = ports_.video->videoToolbox;
    const auto factors = scaler.supportedScaleFactors();
    const int largest = factors.empty() ? 1 : *std::max_element(factors.begin(), factors.end());
    const double scale =
        ports_.resolveSuperResolutionFactor(size->width, size->height).value_or(largest);
    const PixelSize limit = scaler.maximumDimensions().value_or(assumedMaximumDimensions);
    return RapidHQSizeLimits{size->width, size->height, limit.width / scale, limit.height / scale};
}

void DetailViewModel::startVideoSave() {
    if (!videoJob_) {
        videoJob_ = std::make_shared<VideoJob>(ports_, weak_from_this());
        cancelSaveVideo_ = ports_.video->notificationCenter.addObserver(
            cancelSaveVideo, [this] { videoJob_->cancel(); });
    }
    videoJob_->startVideoSave();
}

void DetailViewModel::saveImage() {
    const EnhanceStyle style = selectedStyle.get();
    const auto picture = convertedImages.get()[slotOf(style)];
    if (!picture) return;
    ports_.analytics.logEventWithName(eventName("TrySave"), parametersOf(style));
    ports_.analytics.logEventWithName(eventName("Save"), parametersOf(style));

    const auto format = UserDefaultsHelper::imageFormat(ports_.userDefaults);
    const auto kept =
        keptOf(originalMetadata, ports_.userDefaults.boolForKey(preserveCreationDateKey),
               ports_.userDefaults.boolForKey(preserveLocationKey));
    ports_.photoLibrary.performChanges(
        [ports = ports_, format, picture, kept](PHChanges& changes) {
            makeAssetRequest(changes, ports.imageIO, ports.metadata, format, *picture,
                             kept.creationDate, kept.location);
        },
        [self = shared_from_this()](bool success, const std::optional<Error>& error) {
            self->ports_.dispatch.mainQueue().async(
                [self, success, error] { self->imageSaved(success, error); });
        });
}

void DetailViewModel::imageSaved(bool success, const std::optional<Error>& error) {
    if (!success) return showError(saveFailureMessage(error, ports_.localization));
    isShowShare.set(true);

    incrementCounter(ports_.userDefaults, reviewCountKey);
    if (ports_.ads->showSaveAd()) return;
    if (ports_.userDefaults.integerForKey(reviewCountKey) % 5 != 1) return;
    const auto scenes = ports_.application.connectedScenes();
    auto* scene = scenes.empty() ? nullptr : dynamic_cast<UIWindowScene*>(scenes.front());
    if (scene) ports_.storeReview.requestReviewInScene(*scene);
}

void DetailViewModel::saveImages() { batch_ = BatchSave::start(shared_from_this(), ports_); }

void DetailViewModel::stopWork() {
    if (const auto batch = batch_.lock()) batch->stop();
    if (originalVideoUrl && ports_.video) ports_.video->notificationCenter.post(cancelSaveVideo);
}

void DetailViewModel::abandonWork() {
    if (const auto batch = batch_.lock()) batch->abandon();
    if (originalVideoUrl && isVideoProcessing.get()) ports_.application.setIdleTimerDisabled(false);
}

void DetailViewModel::showError(const std::string& message) {
    alert.set(AlertTypes::defaultButton(ports_.localization.localizedString("Error"), message));
}

void DetailViewModel::setSlot(EnhanceStyle style, std::optional<UIImage> picture) {
    Images images = convertedImages.get();
    images[slotOf(style)] = std::move(picture);
    convertedImages.set(std::move(images));
}

}  // namespace quillmere
