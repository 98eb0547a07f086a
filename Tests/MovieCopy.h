// A movie read and written again through the ports, as the application does it.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

#include "Platform/AVFoundation/AVFoundation.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Tests/Awaited.h"

namespace quillmere {

struct MovieCopyOptions {
    CVPixelFormat format = CVPixelFormat::bgra8;
    std::optional<Size> size;  // the track's own if not set
    float averageBitRate = 200'000;
    double sampleRate = 48000;
    std::uint32_t channels = 2;
};

struct MovieCopyResult {
    AVAssetReaderStatus reader = AVAssetReaderStatus::unknown;
    AVAssetWriterStatus writer = AVAssetWriterStatus::unknown;
    std::optional<Error> error;  // the reader's, or else the writer's
};

/// Drains both tracks side by side, on queues of their own, and waits for the end.
inline MovieCopyResult copyMovie(AVFoundation& movies, Dispatch& dispatch,
                                 const std::filesystem::path& from, const std::filesystem::path& to,
                                 const MovieCopyOptions& options = {}) {
    const AVAssetRef asset = movies.assetWithURL(from);
    const auto reader = movies.assetReaderWithAsset(asset);
    if (!reader) return {AVAssetReaderStatus::failed, AVAssetWriterStatus::unknown, reader.error()};
    const auto writer = movies.assetWriterWithURL(to, AVFileType::quickTimeMovie);
    if (!writer) return {AVAssetReaderStatus::unknown, AVAssetWriterStatus::failed, writer.error()};

    struct Drain {
        AVAssetReaderTrackOutputRef output;
        AVAssetWriterInputRef input;
        std::shared_ptr<AVAssetWriterInputPixelBufferAdaptor> adaptor;
        std::shared_ptr<DispatchQueue> queue;
    };
    std::vector<Drain> drains;
    const auto add = [&](const AVAssetTrackRef& track, const AVReaderOutputSettings& decoded,
                         const AVWriterOutputSettings& coded) {
        Drain drain{movies.assetReaderTrackOutput(track, decoded), movies.assetWriterInput(coded),
                    nullptr, dispatch.makeSerialQueue("drain", QualityOfService::userInitiated)};
        drain.input->setTransform(track->preferredTransform());
        if (const auto* pictures = std::get_if<CVPixelBufferAttributes>(&decoded)) {
            drain.adaptor = movies.pixelBufferAdaptor(drain.input, *pictures);
        }
        if (!(*reader)->canAddOutput(*drain.output) || !(*writer)->canAddInput(*drain.input))
            return;
        (*reader)->addOutput(drain.output);
        (*writer)->addInput(drain.input);
        drains.push_back(drain);
    };
    for (const auto& track : asset->tracksWithMediaType(AVMediaType::video)) {
        const Size size = options.size.value_or(track->naturalSize());
        add(track, CVPixelBufferAttributes{options.format},
            AVVideoOutputSettings{AVVideoCodecType::h264, size.width, size.height,
                                  options.averageBitRate});
        break;
    }
    for (const auto& track : asset->tracksWithMediaType(AVMediaType::audio)) {
        add(track, AVAudioReaderSettings{AudioFormatID::linearPCM, options.sampleRate},
            AVAudioOutputSettings{AudioFormatID::mpeg4AAC, options.channels, options.sampleRate});
        break;
    }
    (*writer)->startWriting();
    (*reader)->startReading();
    (*writer)->startSessionAtSourceTime(MediaTime::zero());

    const auto drained = dispatch.makeGroup();
    for (const Drain& drain : drains) {
        drained->enter();
        drain.input->requestMediaDataWhenReadyOnQueue(drain.queue, [drain, drained] {
            while (drain.input->isReadyForMoreMediaData()) {
                const CMSampleBufferRef sample = drain.output->copyNextSampleBuffer();
                if (!sample) {
                    drain.input->markAsFinished();
                    drained->leave();
                    return;
                }
                if (drain.adaptor) {
                    drain.adaptor->appendPixelBuffer(sample->imageBuffer(),
                                                     sample->presentationTimeStamp());
                } else {
                    drain.input->appendSampleBuffer(sample);
                }
            }
        });
    }
    drained->wait();
    Awaited<bool> finished;
    if ((*reader)->status() == AVAssetReaderStatus::failed) (*writer)->cancelWriting();
    (*writer)->finishWritingWithCompletionHandler([&] { finished.set(true); });
    finished.get();
    MovieCopyResult result{(*reader)->status(), (*writer)->status(), (*reader)->error()};
    if (!result.error) result.error = (*writer)->error();
    return result;
}

}  // namespace quillmere
