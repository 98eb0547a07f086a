// What moves the samples. The platform calls a drain whenever there is room, so it returns when
// there is none and keeps nothing between calls.
#include <utility>

#include "Quillmere/Models/Video/VideoProcessor.h"

namespace quillmere {
namespace {

float fractionOf(MediaTime time, const AVAsset& asset) {
    const double duration = asset.duration().seconds();
    // An unknown duration is no number, and no comparison with it holds.
    return duration > 0 ? static_cast<float>(time.seconds() / duration) : 1.0F;
}

}  // namespace

/// A step that comes after its job's end, when another has begun, must not touch that one.
void VideoProcessor::postToMain(std::uint64_t number, Block step) {
    ports_.dispatch.mainQueue().async([self = shared_from_this(), number, step = std::move(step)] {
        if (self->handles().jobNumber == number) step();
    });
}

void VideoProcessor::postVideoCompleted(std::uint64_t number, const char* text) {
    postToMain(number, [this, text] { markVideoCompleted(text); });
}

void VideoProcessor::drainVideo(std::uint64_t number, const Adaptor& adaptor) {
    for (;;) {
        const Handles job = handles();
        if (job.jobNumber != number || !job.videoOutput || !job.videoInput) return;
        if (!job.videoInput->isReadyForMoreMediaData() ||
            videoCompleted_.load(std::memory_order_relaxed)) {
            return;
        }
        bool stop = isForceCancel();
        const auto sample = stop ? nullptr : job.videoOutput->copyNextSampleBuffer();
        if (!sample || !sample->imageBuffer()) {
            job.videoInput->markAsFinished();
            postVideoCompleted(number, "tryFinish A");
        } else if (!takeStandardFrame(job, sample, *adaptor)) {
            // The movie ends here, and is kept as far as it goes.
            job.videoInput->markAsFinished();
            stop = true;
        }
        if (stop) return postVideoCompleted(number, "tryFinish B");
    }
}

/// False where there is no buffer to draw into.
bool VideoProcessor::takeStandardFrame(const Handles& job, const CMSampleBufferRef& sample,
                                       AVAssetWriterInputPixelBufferAdaptor& adaptor) {
    const MediaTime time = sample->presentationTimeStamp();
    setVideoProgress(fractionOf(time, *job.asset));
    const auto pool = adaptor.pixelBufferPool();
    const auto buffer = pool ? pool->createPixelBuffer() : nullptr;
    if (!buffer) return false;

    const auto frame = ports_.coreImage.imageWithCVPixelBuffer(sample->imageBuffer());
    const auto picture =
        frame && job.imageProcessingHandler ? job.imageProcessingHandler(frame) : CIImageRef();
    // A failed append makes the writer fail, which the end of the job finds.
    if (picture && ciContext_->renderToCVPixelBuffer(*picture, *buffer, picture->extent())) {
        adaptor.appendPixelBuffer(buffer, time);
    } else {
        job.videoInput->appendSampleBuffer(sample);
    }
    return true;
}

void VideoProcessor::drainSuperResolution(std::uint64_t number, const Adaptor& adaptor) {
    for (;;) {
        const Handles job = handles();
        if (job.jobNumber != number || !job.videoOutput || !job.videoInput) return;
        if (!job.videoInput->isReadyForMoreMediaData() ||
            videoCompleted_.load(std::memory_order_relaxed)) {
            return;
        }
        const bool stop = isForceCancel();
        const auto sample = stop ? nullptr : job.videoOutput->copyNextSampleBuffer();
        if (!sample) {
            job.videoInput->markAsFinished();
            postVideoCompleted(number, "tryFinish A");
            if (stop) return postVideoCompleted(number, "tryFinish B");
        } else if (const auto done = takeSuperResolutionFrame(job, *sample, *adaptor); !done) {
            job.videoInput->markAsFinished();
            postToMain(number, [this, error = done.error()] { failSuperResolution(error); });
            return;
        }
    }
}

Result<void> VideoProcessor::takeSuperResolutionFrame(
    const Handles& job, const CMSampleBuffer& sample,
    AVAssetWriterInputPixelBufferAdaptor& adaptor) {
    const MediaTime time = sample.presentationTimeStamp();
    setVideoProgress(fractionOf(time, *job.asset));
    const auto pool = adaptor.pixelBufferPool();
    const auto buffer = pool ? pool->createPixelBuffer() : nullptr;
    if (!buffer) return failure("VideoSuperResolutionConfigurationFailed");
    if (ports_.device.systemVersion() < superResolutionSystemVersion) {
        return failure("VideoSuperResolutionRequiresLatestOS");
    }
    if (!job.superResolution) return failure("VideoSuperResolutionConfigurationFailed");
    const auto scaled = job.superResolution->processSuperResolutionFrame(sample, buffer);
    if (!scaled) return scaled.error();
    adaptor.appendPixelBuffer(buffer, time);
    return {};
}

void VideoProcessor::drainAudio(std::uint64_t number) {
    for (;;) {
        const Handles job = handles();
        if (job.jobNumber != number || !job.audioOutput || !job.audioInput) return;
        if (!job.audioInput->isReadyForMoreMediaData() ||
            audioCompleted_.load(std::memory_order_relaxed)) {
            return;
        }
        const bool stopped = isForceCancel();
        const auto sample = stopped ? nullptr : job.audioOutput->copyNextSampleBuffer();
        if (!sample) {
            job.audioInput->markAsFinished();
            postToMain(number, [this, stopped] { markAudioDrained(stopped); });
            if (!stopped) continue;
            return postToMain(number, [this] { markAudioCompleted("tryFinish E"); });
        }
        job.audioInput->appendSampleBuffer(sample);
        setAudioProgress(fractionOf(sample->presentationTimeStamp(), *job.asset));
    }
}

}  // namespace quillmere
