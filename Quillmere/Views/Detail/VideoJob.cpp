#include "Quillmere/Views/Detail/VideoJob.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <string>
#include <utility>

#include "Base/Invariant.h"
#include "Quillmere/Models/Services/AnalyticsEvents.h"
#include "Quillmere/Models/Services/LocalizedReason.h"
#include "Quillmere/Models/Services/PreferenceKeys.h"
#include "Quillmere/Models/Video/FrameEnhancer.h"
#include "Quillmere/Views/Detail/DetailViewModel.h"

namespace quillmere {

namespace {

const DetailPorts::Video& videoPortsOf(const DetailPorts& ports) {
    if (!ports.video) invariantBroken();
    return *ports.video;
}

}  // namespace

VideoJob::VideoJob(const DetailPorts& ports, std::weak_ptr<DetailViewModel> model)
    : ports_(ports),
      video_(videoPortsOf(ports)),
      model_(std::move(model)),
      videoProcessor_(std::make_shared<VideoProcessor>(VideoProcessor::Ports{
          ports.avFoundation, video_.audioToolbox, video_.videoToolbox, video_.coreImage,
          ports.dispatch, video_.fileManager, video_.crashLog, ports.device, ports.localization,
          video_.console})) {}

void VideoJob::startVideoSave() {
    const auto model = model_.lock();
    if (!model || model->isVideoProcessing.get()) return;
    const EnhanceStyle style = model->selectedStyle.get();
    const auto preview = model->convertedImages.get()[static_cast<std::size_t>(rawValue(style))];
    if (style != EnhanceStyle::rapidHQ && !preview) return;
    log(*model, eventName("TrySaveVideo"));
    if (!model->originalVideoUrl) invariantBroken();
    const auto source = *model->originalVideoUrl;
    const auto outputUrl = video_.files.makeOutputUrl(source.filename().string(), ".mov");

    model->videoProgress.set(0);
    currentProgress_.store(0, std::memory_order_relaxed);
    model->isVideoProcessing.set(true);
    model->isConverting.set(true);
    ports_.application.setIdleTimerDisabled(true);
    setHandlers(outputUrl);

    const auto asset = ports_.avFoundation.assetWithURL(source);
    const auto tracks = asset->tracksWithMediaType(AVMediaType::video);
    if (tracks.empty()) return refuse(*model, "FailedToAccessVideoError");
    const Size stored = tracks.front()->naturalSize();
    const Size natural{std::abs(stored.width), std::abs(stored.height)};
    if (natural.width > 0 && natural.height > 0) model->originalVideoSize = natural;

    if (style == EnhanceStyle::rapidHQ) return startScaling(*model, asset, outputUrl, natural);
    const auto enhancer = std::make_shared<FrameEnhancer>(
        FrameEnhancer::Ports{video_.coreImage, ports_.dispatch, video_.console, ports_.enhanceImage,
                             video_.sharedCIContext},
        natural, style);
    videoProcessor_->setImageProcessingHandler(
        [weak = weak_from_this(), enhancer](const CIImageRef& frame) {
            return weak.expired() ? frame : enhancer->enhance(frame);
        });
    videoProcessor_->startProcessing(asset, outputUrl, VideoProcessor::Mode::standard(),
                                     preview->size().width, preview->size().height);
}

void VideoJob::startScaling(DetailViewModel& model, const AVAssetRef& asset,
                            const std::filesystem::path& outputUrl, Size natural) {
    const bool canScale = ports_.device.systemVersion() >= superResolutionSystemVersion &&
                          video_.videoToolbox.superResolutionScalerIsSupported();
    const auto factor = canScale
                            ? ports_.resolveSuperResolutionFactor(natural.width, natural.height)
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
    showError(model, ports_.localization.localizedString(messageKey));
}

void VideoJob::setHandlers(const std::filesystem::path& outputUrl) {
    videoProcessor_->setCompletionHandler(
        [weak = weak_from_this(), outputUrl,
         start = ports_.dispatch.now()](const std::optional<Error>& error) {
            const auto self = weak.lock();
            if (!self) return;
            self->ports_.dispatch.mainQueue().async(
                [self] { self->ports_.application.setIdleTimerDisabled(false); });
            const std::chrono::duration<double> taken = self->ports_.dispatch.now() - start;
            self->video_.console.print("動画作成時間 = " + std::to_string(taken.count()));
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
    // Both tracks come here, each on its thread: what one shows, the other mustn't show again.
    const std::lock_guard lock(progressMutex_);
    if (currentProgress_.load(std::memory_order_relaxed) >= whole) return;
    ports_.dispatch.mainQueue().async([weak = model_, progress] {
        if (const auto model = weak.lock()) model->videoProgress.set(progress);
    });
    currentProgress_.store(whole, std::memory_order_relaxed);
}

void VideoJob::completed(const std::optional<Error>& error,
                         const std::filesystem::path& outputUrl) {
    auto& main = ports_.dispatch.mainQueue();
    const auto self = shared_from_this();
    if (error) {
        video_.console.print(error->localizedDescription);
        main.async([self, failed = *error] { self->videoSaveFailed(failed); });
    } else if (videoProcessor_->isForceCancel()) {
        main.async([self] { self->videoSaveCanceled(); });
    } else {
        main.async([self, outputUrl] { self->videoSaveSucceeded(outputUrl); });
    }
}

void VideoJob::videoSaveSucceeded(const std::filesystem::path& url) {
    const auto model = model_.lock();
    if (!model) return;
    log(*model, eventName("SaveVideoSuccess"));
    model->videoProgress.set(1.0F);
    model->isVideoProcessing.set(false);
    model->isConverting.set(false);
    model->outputVideoUrl = url;
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
    std::string message = localizedReason(error, ports_.localization);
    if (std::max(size.width, size.height) > 1024.0 &&
        ports_.userDefaults.integerForKey(resolutionLimitIndexKey) == 1) {
        message += "\n" + ports_.localization.localizedString("MayBeTooLargeError");
    }
    showError(*model, std::move(message));
}

void VideoJob::log(DetailViewModel& model, std::string_view event) const {
    ports_.analytics.logEventWithName(
        event, AnalyticsParameters{{"Style", std::to_string(rawValue(model.selectedStyle.get()))}});
}

void VideoJob::showError(DetailViewModel& model, std::string message) const {
    model.alert.set(AlertTypes::defaultButton(ports_.localization.localizedString("Error"),
                                              std::move(message)));
}

}  // namespace quillmere
