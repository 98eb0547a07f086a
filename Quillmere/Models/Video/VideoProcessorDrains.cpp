// What moves the samples. The platform calls a drain whenever there is room, so it returns when
// there is none and keeps nothing between calls.
#include "Quillmere/Models/Video/VideoProcessor.h"

namespace quillmere {
namespace {

float fractionOf(MediaTime time, const AVAsset& asset) {
    const double duration = asset.duration().seconds();
    // An unknown duration is no number, and no comparison with it holds.
    return duration > 0 ? static_cast<float>(time.seconds() / duration) : 1.0F;
}

}  // namespace

void VideoProcessor::postVideoCompleted(const char* text) {
    ports_.dispatch.mainQueue().async(
        [self = shared_from_this(), text] { self->markVideoCompleted(text); });
}

void VideoProcessor::drainVideo(const Adaptor& adaptor) {
    for (;;) {
        const Handles job = handles();
        if (!job.videoOutput || !job.videoInput) return;
        if (!job.videoInput->isReadyForMoreMediaData() ||
            videoCompleted_.load(std::memory_order_relaxed)) {
            return;
        }
        bool stop = isForceCancel();
        const auto sample = stop ? nullptr : job.videoOutput->copyNextSampleBuffer();
        if (!sample || !sample->imageBuffer()) {
            job.videoInput->markAsFinished();
            postVideoCompleted("tryFinish A");
        } else if (!takeStandardFrame(job, sample, *adaptor)) {
            // The movie ends here, and is kept as far as it goes.
            job.videoInput->markAsFinished();
            stop = true;
        }
        if (stop) return postVideoCompleted("tryFinish B");
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

void VideoProcessor::drainSuperResolution(const Adaptor& adaptor) {
    for (;;) {
        const Handles job = handles();
        if (!job.videoOutput || !job.videoInput) return;
        if (!job.videoInput->isReadyForMoreMediaData() ||
            videoCompleted_.load(std::memory_order_relaxed)) {
            return;
        }
        const bool stop = isForceCancel();
        const auto sample = stop ? nullptr : job.videoOutput->copyNextSampleBuffer();
        if (!sample) {
            job.videoInput->markAsFinished();
            postVideoCompleted("tryFinish A");
            if (stop) return postVideoCompleted("tryFinish B");
        } else if (const auto done = takeSuperResolutionFrame(job, *sample, *adaptor); !done) {
            job.videoInput->markAsFinished();
            ports_.dispatch.mainQueue().async([self = shared_from_this(), error = done.error()] {
                self->failSuperResolution(error);
            });
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

void VideoProcessor::drainAudio() {
    for (;;) {
        const Handles job = handles();
        if (!job.audioOutput || !job.audioInput) return;
        if (!job.audioInput->isReadyForMoreMediaData() ||
            audioCompleted_.load(std::memory_order_relaxed)) {
            return;
        }
        const bool stopped = isForceCancel();
        const auto sample = stopped ? nullptr : job.audioOutput->copyNextSampleBuffer();
        if (!sample) {
            job.audioInput->markAsFinished();
            ports_.dispatch.mainQueue().async(
                [self = shared_from_this(), stopped] { self->markAudioDrained(stopped); });
            if (!stopped) continue;
            return ports_.dispatch.mainQueue().async(
                [self = shared_from_this()] { self->markAudioCompleted("tryFinish E"); });
        }
        job.audioInput->appendSampleBuffer(sample);
        setAudioProgress(fractionOf(sample->presentationTimeStamp(), *job.asset));
    }
}

}  // namespace quillmere
