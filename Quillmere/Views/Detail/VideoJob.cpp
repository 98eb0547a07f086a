#include "Quillmere/Views/Detail/VideoJob.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <string>
#include <utility>

#include "Base/Invariant.h"
#include "Quillmere/Models/Services/AnalyticsEvents.h"
#include "Quillmere/Models/Services/PreferenceKeys.h"
#include "Quillmere/Views/Detail/DetailViewModel.h"

namespace quillmere {

VideoJob::VideoJob(const Ports& ports, std::weak_ptr<DetailViewModel> model)
    : ports_(ports),
      model_(std::move(model)),
      files_(ports.files),
      videoProcessor_(std::make_shared<VideoProcessor>(ports.processor)) {}

void VideoJob::startVideoSave() {
    const auto model = model_.lock();
    if (!model || model->isVideoProcessing.get()) return;
    const EnhanceStyle style = model->selectedStyle.get();
    const auto preview = model->convertedImages.get()[static_cast<std::size_t>(rawValue(style))];
    if (style != EnhanceStyle::rapidHQ && !preview) return;
    log(*model, eventName("TrySaveVideo"));
    if (!model->originalVideoUrl) invariantBroken();
    const auto source = *model->originalVideoUrl;
    const auto outputUrl = files_.makeOutputUrl(source.filename().string(), ".mov");

    model->videoProgress.set(0);
    currentProgress_.store(0, std::memory_order_relaxed);
    model->isVideoProcessing.set(true);
    model->isConverting.set(true);
    ports_.detail.application.setIdleTimerDisabled(true);
    setHandlers(outputUrl);

    const auto asset = ports_.detail.avFoundation.assetWithURL(source);
    const auto tracks = asset->tracksWithMediaType(AVMediaType::video);
    if (tracks.empty()) return refuse(*model, "FailedToAccessVideoError");
    const Size stored = tracks.front()->naturalSize();
    const Size natural{std::abs(stored.width), std::abs(stored.height)};
    if (natural.width > 0 && natural.height > 0) model->originalVideoSize = natural;

    if (style == EnhanceStyle::rapidHQ) return startScaling(*model, asset, outputUrl, natural);
    videoProcessor_->setImageProcessingHandler(
        [weak = weak_from_this(), natural, style](const CIImageRef& frame) {
            const auto self = weak.lock();
            return self ? self->enhanceVideoFrame(frame, natural, style) : frame;
        });
    videoProcessor_->startProcessing(asset, outputUrl, VideoProcessor::Mode::standard(),
                                     preview->size().width, preview->size().height);
}

void VideoJob::startScaling(DetailViewModel& model, const AVAssetRef& asset,
                            const std::filesystem::path& outputUrl, Size natural) {
    const bool canScale = ports_.detail.device.systemVersion() >= superResolutionSystemVersion &&
                          ports_.processor.videoToolbox.superResolutionScalerIsSupported();
    const auto factor =
        canScale ? ports_.detail.resolveSuperResolutionFactor(natural.width, natural.height)
                 : std::nullopt;
    if (!factor) return refuse(model, "VideoSuperResolutionUnsupported");
    const Size size{natural.width * *factor, natural.height * *factor};
    model.rapidHQExpectedSize.set(size);
    videoProcessor_->setImageProcessingHandler(nullptr);
    videoProcessor_->startProcessing(
        asset, outputUrl, VideoProcessor::Mode::superResolution(*factor), size.width, size.height);
}

void VideoJob::cancel() {
    const auto model = model_.lock();
    if (model && model->isVideoProcessing.get()) videoProcessor_->setForceCancel();
}

/// The idle timer stays as it is: only a job that reaches its completion gives it back.
void VideoJob::refuse(DetailViewModel& model, const char* messageKey) {
    model.isVideoProcessing.set(false);
    model.videoProgress.set(0);
    model.isConverting.set(false);
    showError(model, ports_.detail.localization.localizedString(messageKey));
}

void VideoJob::setHandlers(const std::filesystem::path& outputUrl) {
    videoProcessor_->setCompletionHandler(
        [weak = weak_from_this(), outputUrl,
         start = ports_.detail.dispatch.now()](const std::optional<Error>& error) {
            const auto self = weak.lock();
            if (!self) return;
            self->ports_.detail.dispatch.mainQueue().async(
                [self] { self->ports_.detail.application.setIdleTimerDisabled(false); });
            const std::chrono::duration<double> taken = self->ports_.detail.dispatch.now() - start;
            self->ports_.processor.console.print("動画作成時間 = " + std::to_string(taken.count()));
            self->completed(error, outputUrl);
        });
    videoProcessor_->setProgressHandler([weak = weak_from_this()](float progress) {
        if (const auto self = weak.lock()) self->progressed(progress);
    });
}

void VideoJob::progressed(float progress) {
    const float percent = progress * 100.0F;
    if (!std::isfinite(percent)) invariantBroken();
    const int whole = static_cast<int>(percent);
    if (currentProgress_.load(std::memory_order_relaxed) >= whole) return;
    ports_.detail.dispatch.mainQueue().async([weak = model_, progress] {
        if (const auto model = weak.lock()) model->videoProgress.set(progress);
    });
    currentProgress_.store(whole, std::memory_order_relaxed);
}

void VideoJob::completed(const std::optional<Error>& error,
                         const std::filesystem::path& outputUrl) {
    auto& main = ports_.detail.dispatch.mainQueue();
    const auto self = shared_from_this();
    if (error) {
        ports_.processor.console.print(error->localizedDescription);
        main.async([self, failed = *error] { self->videoSaveFailed(failed); });
    } else if (videoProcessor_->isForceCancel()) {
        main.async([self] { self->videoSaveCanceled(); });
    } else {
        main.async([self, outputUrl] { self->videoSaveSucceeded(outputUrl); });
    }
}

CIImageRef VideoJob::enhanceVideoFrame(const CIImageRef& frame, Size natural, EnhanceStyle style) {
    const Rect extent = frame->extent();
    const bool isNatural = extent.width == natural.width && extent.height == natural.height;
    const CIImageRef working =
        isNatural ? frame : frame->imageByCroppingToRect({0, 0, natural.width, natural.height});
    if (style == EnhanceStyle::original) return working;
    const auto bitmap = ports_.sharedCIContext().createCGImage(*working, working->extent());
    if (!bitmap) {
        ports_.processor.console.print("Image processing failed.Please try with another image.");
        return frame;
    }

    struct Slot {
        std::optional<UIImage> picture;
        std::shared_ptr<DispatchSemaphore> isThere;
    };
    auto& dispatch = ports_.detail.dispatch;
    const auto slot = std::make_shared<Slot>(Slot{std::nullopt, dispatch.makeSemaphore(0)});
    dispatch.globalQueue(QualityOfService::userInitiated)
        .async([self = shared_from_this(), slot, style, picture = UIImage(*bitmap)] {
            // A failed tile calls before the end does, and the frame then stays as it is; but the
            // end is waited for, so that one frame at a time goes through the engine.
            bool isFirst = true;
            self->ports_.detail.enhanceImage(style, picture, {},
                                             [&isFirst, &slot](std::optional<UIImage> enhanced,
                                                               const std::optional<std::string>&) {
                                                 if (std::exchange(isFirst, false))
                                                     slot->picture = std::move(enhanced);
                                             });
            slot->isThere->signal();
        });
    slot->isThere->wait();
    if (!slot->picture) return frame;
    const auto enhanced = ports_.processor.coreImage.imageWithImage(*slot->picture);
    return enhanced ? enhanced : frame;
}

void VideoJob::videoSaveSucceeded(const std::filesystem::path& url) {
    const auto model = model_.lock();
    if (!model) return;
    log(*model, eventName("SaveVideoSuccess"));
    model->videoProgress.set(1.0F);
    model->isVideoProcessing.set(false);
    model->isConverting.set(false);
    outputVideoUrl_ = url;
    model->isShowingVideoPreview.set(true);
}

void VideoJob::videoSaveCanceled() {
    const auto model = model_.lock();
    if (!model) return;
    log(*model, eventName("SaveVideoCanceled"));
    refuse(*model, "CanceledToSaveVideo");
}

void VideoJob::videoSaveFailed(const Error& error) {
    const auto model = model_.lock();
    if (!model) return;
    log(*model, eventName("SaveVideoFailure"));
    model->isVideoProcessing.set(false);
    model->videoProgress.set(0);
    model->isConverting.set(false);
    if (!model->originalImage) invariantBroken();
    const Size size = model->originalImage->size();
    std::string message = error.localizedDescription;
    if (std::max(size.width, size.height) > 1024.0 &&
        ports_.detail.userDefaults.integerForKey(resolutionLimitIndexKey) == 1) {
        message += "\n" + ports_.detail.localization.localizedString("MayBeTooLargeError");
    }
    showError(*model, std::move(message));
}

void VideoJob::log(DetailViewModel& model, std::string_view event) const {
    ports_.detail.analytics.logEventWithName(
        event, AnalyticsParameters{{"Style", std::to_string(rawValue(model.selectedStyle.get()))}});
}

void VideoJob::showError(DetailViewModel& model, std::string message) const {
    model.alert.set(AlertTypes::defaultButton(ports_.detail.localization.localizedString("Error"),
                                              std::move(message)));
}

}  // namespace quillmere
