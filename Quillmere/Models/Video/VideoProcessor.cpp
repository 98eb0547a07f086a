#include "Quillmere/Models/Video/VideoProcessor.h"

#include <utility>

#include "Quillmere/Models/Video/ExportError.h"

namespace quillmere {
namespace {

constexpr float videoShare = 0.95F;
constexpr float audioShare = 0.05F;

}  // namespace

VideoProcessor::VideoProcessor(const Ports& ports)
    : ports_(ports),
      videoQueue_(ports.dispatch.makeSerialQueue("videoQueue", QualityOfService::userInitiated)),
      audioQueue_(ports.dispatch.makeSerialQueue("audioQueue", QualityOfService::userInitiated)),
      ciContext_(ports.coreImage.makeContext({false, false})) {}

void VideoProcessor::setProgressHandler(ProgressHandler handler) {
    change([&](Handles& job) { job.progressHandler.swap(handler); });
}

void VideoProcessor::setCompletionHandler(CompletionHandler handler) {
    change([&](Handles& job) { job.completionHandler.swap(handler); });
}

void VideoProcessor::setImageProcessingHandler(ImageProcessingHandler handler) {
    change([&](Handles& job) { job.imageProcessingHandler.swap(handler); });
}

void VideoProcessor::setVideoQuality(std::optional<float> quality) {
    change([&](Handles& job) { job.videoQuality = quality; });
}

VideoProcessor::Handles VideoProcessor::handles() const {
    const std::lock_guard lock(handlesMutex_);
    return handles_;
}

Error VideoProcessor::failure(std::string_view key) const {
    return exportError(ports_.localization, key);
}

void VideoProcessor::startProcessing(const AVAssetRef& asset,
                                     const std::filesystem::path& outputUrl, Mode mode,
                                     double width, double height) {
    {
        const std::lock_guard lock(finishMutex_);
        resetState();
    }
    change([&](Handles& job) {
        job.asset = asset;
        job.outputUrl = outputUrl;
        ++job.jobNumber;
        job.currentMode = mode;
    });
    const auto adaptor = setUp(width, height);
    if (!adaptor) {
        const std::lock_guard lock(finishMutex_);
        if (const auto handler = handles().completionHandler) handler(adaptor.error());
        resetState();
        return;
    }
    startVideoTrack(*adaptor);
    startAudioTrack();
}

void VideoProcessor::markVideoCompleted(std::string_view text) {
    videoCompleted_.store(true, std::memory_order_relaxed);
    ports_.crashLog.log(text);
    tryFinish();
}

void VideoProcessor::markAudioDrained(bool stopped) {
    audioCompleted_.store(true, std::memory_order_relaxed);
    if (!stopped) markAudioCompleted("tryFinish D");
}

void VideoProcessor::markAudioCompleted(std::string_view text) {
    audioCompleted_.store(true, std::memory_order_relaxed);
    ports_.crashLog.log(text);
    tryFinish();
}

void VideoProcessor::failSuperResolution(const Error& error) {
    change([&](Handles& job) { job.processingError = error; });
    setForceCancel();
    videoCompleted_.store(true, std::memory_order_relaxed);
    const Handles job = handles();
    if (job.reader && job.reader->status() == AVAssetReaderStatus::reading) {
        job.reader->cancelReading();
    }
    if (job.writer && job.writer->status() == AVAssetWriterStatus::writing) {
        job.writer->cancelWriting();
    }
    ports_.crashLog.log("tryFinish SuperResolutionError");
    tryFinish();
}

void VideoProcessor::setVideoProgress(float value) {
    videoProgress_.store(value, std::memory_order_relaxed);
    const Handles job = handles();
    const float audio = audioProgress_.load(std::memory_order_relaxed);
    setProgress(job.audioInput ? value * videoShare + audio * audioShare : value, job);
}

void VideoProcessor::setAudioProgress(float value) {
    audioProgress_.store(value, std::memory_order_relaxed);
    const Handles job = handles();
    const float video = videoProgress_.load(std::memory_order_relaxed);
    setProgress(job.videoInput ? video * videoShare + value * audioShare : value, job);
}

void VideoProcessor::setProgress(float value, const Handles& job) {
    progress_.store(value, std::memory_order_relaxed);
    if (job.progressHandler) job.progressHandler(value);
}

void VideoProcessor::tryFinish() {
    const Handles job = handles();
    if (!job.reader) return ports_.crashLog.log("reader == nil at tryFinish");

    const std::lock_guard lock(finishMutex_);
    if (!audioCompleted_.load(std::memory_order_relaxed) ||
        !videoCompleted_.load(std::memory_order_relaxed)) {
        return;
    }
    const auto reader = job.reader->status();
    const auto writer = job.writer->status();
    if (reader == AVAssetReaderStatus::cancelled || writer == AVAssetWriterStatus::cancelled ||
        isForceCancel() || writer == AVAssetWriterStatus::failed) {
        finish();
    } else if (reader == AVAssetReaderStatus::failed) {
        job.writer->cancelWriting();
        finish();
    } else {
        job.writer->finishWritingWithCompletionHandler([weak = weak_from_this()] {
            if (const auto self = weak.lock()) self->finish();
        });
    }
}

void VideoProcessor::finish() {
    const std::lock_guard lock(finishMutex_);
    const Handles job = handles();
    std::optional<Error> error;
    if (!job.reader) {
        ports_.crashLog.log("reader == nil at finish");
        if (!isForceCancel()) error = failure("reader == nil");
    } else {
        if (job.writer->status() == AVAssetWriterStatus::failed ||
            job.reader->status() == AVAssetReaderStatus::failed || isForceCancel()) {
            // There may be no file yet, and then there is nothing to delete.
            static_cast<void>(ports_.fileManager.removeItem(job.outputUrl));
        }
        error = job.processingError;
        if (!error) error = job.writer->error();
        if (!error) error = job.reader->error();
    }
    if (job.completionHandler) job.completionHandler(error);
    resetState();
}

void VideoProcessor::resetState() {
    setVideoProgress(0);
    setAudioProgress(0);
    videoCompleted_.store(false, std::memory_order_relaxed);
    audioCompleted_.store(false, std::memory_order_relaxed);
    Handles ended;  // goes after the lock: readers and writers end threads of theirs
    change([&](Handles& job) {
        ended = std::exchange(job, {});
        job.progressHandler = ended.progressHandler;
        job.completionHandler = ended.completionHandler;
        job.imageProcessingHandler = ended.imageProcessingHandler;
        job.videoQuality = ended.videoQuality;
        job.asset = ended.asset;
        job.outputUrl = ended.outputUrl;
        job.jobNumber = ended.jobNumber;
    });
    isForceCancel_.store(false, std::memory_order_relaxed);
    if (ended.superResolution) ended.superResolution->endSession();
}

}  // namespace quillmere
