// From an asset to a reader and a writer that run.
#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>
#include <utility>

#include "Quillmere/Models/Video/AudioSampleRate.h"
#include "Quillmere/Models/Video/VideoProcessor.h"

namespace quillmere {
namespace {

constexpr CVPixelBufferAttributes bgra{CVPixelFormat::bgra8};

bool isQuarterTurn(const AffineTransform& transform) {
    const double degrees = std::atan2(transform.b, transform.a) * 180 / std::numbers::pi;
    return degrees == 90.0 || degrees == -90.0;
}

/// Of the first format that describes its sound.
AudioStreamBasicDescription describedSound(const AVAssetTrack& track) {
    for (const CMFormatDescription& format : track.formatDescriptions()) {
        if (format.streamBasicDescription()) return *format.streamBasicDescription();
    }
    return {44100.0, 1};
}

}  // namespace

Result<VideoProcessor::Adaptor> VideoProcessor::setUp(double width, double height) {
    const auto [asset, outputUrl, mode] = [this] {
        Handles job = handles();
        return std::tuple(job.asset, job.outputUrl, job.currentMode);
    }();
    auto madeReader = ports_.avFoundation.assetReaderWithAsset(asset);
    if (!madeReader) return madeReader.error();
    const auto reader = *std::move(madeReader);
    change([&](Handles& job) { job.reader = reader; });
    auto madeWriter = ports_.avFoundation.assetWriterWithURL(outputUrl, AVFileType::quickTimeMovie);
    if (!madeWriter) return madeWriter.error();
    const auto writer = *std::move(madeWriter);
    change([&](Handles& job) { job.writer = writer; });

    const auto videoTracks = asset->tracksWithMediaType(AVMediaType::video);
    if (videoTracks.empty()) return failure("FailedToAccessVideoError");
    const AVAssetTrackRef track = videoTracks.front();

    const auto readerSettings = videoReaderSettings(*track, mode);
    if (!readerSettings) return readerSettings.error();
    const auto output = ports_.avFoundation.assetReaderTrackOutput(track, *readerSettings);
    output->setAlwaysCopiesSampleData(false);
    if (!reader->canAddOutput(*output)) return failure("Can't add video output");
    reader->addOutput(output);
    change([&](Handles& job) { job.videoOutput = output; });

    const AffineTransform transform = track->preferredTransform();
    if (!mode.scaleFactor && isQuarterTurn(transform)) std::swap(width, height);
    // The source's data rate, whatever the scale.
    const auto input = ports_.avFoundation.assetWriterInput(AVVideoOutputSettings{
        AVVideoCodecType::h264, width, height, track->estimatedDataRate(), handles().videoQuality});
    input->setExpectsMediaDataInRealTime(false);
    input->setTransform(transform);
    if (!writer->canAddInput(*input)) return failure("Can't add video input");

    const auto scaler = handles().superResolution;
    const auto attributes =
        scaler ? scaler->configuration().destinationPixelBufferAttributes() : bgra;
    const auto adaptor = ports_.avFoundation.pixelBufferAdaptor(input, attributes);
    writer->addInput(input);
    change([&](Handles& job) { job.videoInput = input; });

    const auto audioTracks = asset->tracksWithMediaType(AVMediaType::audio);
    if (!audioTracks.empty()) {
        if (const auto done = setUpAudio(audioTracks.front()); !done) return done.error();
    }
    // A start that fails shows in the statuses, at the end.
    writer->startWriting();
    reader->startReading();
    writer->startSessionAtSourceTime(MediaTime::zero());
    return adaptor;
}

Result<AVReaderOutputSettings> VideoProcessor::videoReaderSettings(const AVAssetTrack& track,
                                                                   Mode mode) {
    if (!mode.scaleFactor) return AVReaderOutputSettings(bgra);
    auto scaler = SuperResolutionContext::prepare(
        {ports_.videoToolbox, ports_.dispatch, ports_.device, ports_.localization},
        track.naturalSize(), *mode.scaleFactor);
    if (!scaler) return scaler.error();
    change([&](Handles& job) { job.superResolution = *scaler; });
    return AVReaderOutputSettings((*scaler)->configuration().sourcePixelBufferAttributes());
}

Result<void> VideoProcessor::setUpAudio(const AVAssetTrackRef& track) {
    const auto [sourceRate, sourceChannels] = describedSound(*track);
    const double outputRate = resolveOutputSampleRate(ports_.audioToolbox, sourceRate);
    ports_.console.print("outputSampleRate: " + std::to_string(outputRate));

    const Handles job = handles();
    const auto output = ports_.avFoundation.assetReaderTrackOutput(
        track, AVAudioReaderSettings{AudioFormatID::linearPCM, outputRate});
    output->setAlwaysCopiesSampleData(false);
    if (!job.reader->canAddOutput(*output)) return failure("Can't add audio input");
    job.reader->addOutput(output);
    change([&](Handles& changed) { changed.audioOutput = output; });

    const auto input = ports_.avFoundation.assetWriterInput(AVAudioOutputSettings{
        AudioFormatID::mpeg4AAC, std::min(sourceChannels, std::uint32_t{2}), outputRate});
    input->setExpectsMediaDataInRealTime(false);
    // A video without its sound is better than none.
    if (!job.writer->canAddInput(*input)) return {};
    job.writer->addInput(input);
    change([&](Handles& changed) { changed.audioInput = input; });
    return {};
}

void VideoProcessor::startVideoTrack(const Adaptor& adaptor) {
    const Handles job = handles();
    if (!job.videoInput) return markVideoCompleted("tryFinish C");
    const bool scales = job.currentMode.scaleFactor.has_value();
    job.videoInput->requestMediaDataWhenReadyOnQueue(videoQueue_, [weak = weak_from_this(), adaptor,
                                                                   scales, number = job.jobNumber] {
        const auto self = weak.lock();
        if (!self) return;
        scales ? self->drainSuperResolution(number, adaptor) : self->drainVideo(number, adaptor);
    });
}

void VideoProcessor::startAudioTrack() {
    const Handles job = handles();
    if (!job.audioInput) return markAudioCompleted("tryFinish F");
    job.audioInput->requestMediaDataWhenReadyOnQueue(
        audioQueue_, [weak = weak_from_this(), number = job.jobNumber] {
            if (const auto self = weak.lock()) self->drainAudio(number);
        });
}

}  // namespace quillmere
