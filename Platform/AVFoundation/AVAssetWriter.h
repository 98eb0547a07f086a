// Encoding frames and sound into a new movie file.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <variant>

#include "Base/Error.h"
#include "Base/Geometry.h"
#include "Platform/AVFoundation/AVAsset.h"
#include "Platform/AVFoundation/CMSampleBuffer.h"
#include "Platform/Dispatch/Dispatch.h"

namespace quillmere {

enum class AVFileType { quickTimeMovie };

enum class AVAssetWriterStatus {
    unknown = 0,
    writing = 1,
    completed = 2,
    failed = 3,
    cancelled = 4
};

enum class AVVideoCodecType { h264 };

struct AVVideoOutputSettings {
    AVVideoCodecType codec = AVVideoCodecType::h264;
    /// In pixels; a fraction is rounded, halves up. The coded size is even: an odd side repeats
    /// its last line.
    double width = 0;
    double height = 0;
    /// `AVVideoAverageBitRateKey`, in bits a second; 0 leaves it to the encoder.
    float averageBitRate = 0;
    /// `AVVideoQualityKey`, 0 to 1: the same for each picture, at whatever data rate that takes. In
    /// place of `averageBitRate`.
    std::optional<float> quality = {};
};

struct AVAudioOutputSettings {
    AudioFormatID formatID = AudioFormatID::mpeg4AAC;
    std::uint32_t numberOfChannels = 2;  // one or two
    double sampleRate = 44100;           // in hertz, one of those that the encoder takes
};

using AVWriterOutputSettings = std::variant<AVVideoOutputSettings, AVAudioOutputSettings>;

/// A track of the new movie. Samples come in the order of presentation. `append...` and
/// `markAsFinished` are called by one thread at a time; the rest by any.
class AVAssetWriterInput {
public:
    virtual ~AVAssetWriterInput() = default;

    /// A hint; before `startWriting`.
    virtual void setExpectsMediaDataInRealTime(bool realTime) = 0;
    /// The `preferredTransform` of the new track; before the input is added.
    virtual void setTransform(const AffineTransform& transform) = 0;

    /// False before `startWriting` and after `markAsFinished`; true from then on where the writer
    /// failed or was cancelled, so that whoever drains a source into it comes to an end. In
    /// between, whether there is room: an input holds a few samples that are not encoded yet, and
    /// waits for another that is far behind. The only unfinished one is always ready.
    virtual bool isReadyForMoreMediaData() const = 0;

    /// Nothing more will come. Later calls do nothing.
    virtual void markAsFinished() = 0;

    /// False where the writer is not writing, the input is finished or the sample doesn't fit: of
    /// another kind, or with a time that is no later than the last frame's. A sample that doesn't
    /// fit makes the writer fail. A frame of another size is scaled to the track's. A gap in the
    /// sound becomes silence, and what overlaps earlier sound is cut. Blocks while there is no
    /// room. Before the session has started it is a broken invariant.
    virtual bool appendSampleBuffer(const CMSampleBufferRef& sample) = 0;

    /// Runs `block` on `queue` now and whenever there is room again, never twice at once, until
    /// `markAsFinished`; also after a failure or a cancel, until then. A block that appends
    /// nothing though there is room runs again only when something changes at the writer. Once
    /// per input. The input holds the block and the queue until it is finished or the writer is
    /// gone.
    virtual void requestMediaDataWhenReadyOnQueue(std::shared_ptr<DispatchQueue> queue,
                                                  Block block) = 0;
};

using AVAssetWriterInputRef = std::shared_ptr<AVAssetWriterInput>;

/// Appends bare pixel buffers to an input, and has a pool of such buffers.
class AVAssetWriterInputPixelBufferAdaptor {
public:
    virtual ~AVAssetWriterInputPixelBufferAdaptor() = default;

    /// Buffers of the track's size and the adaptor's format. Null while the input's writer is not
    /// writing. Any thread.
    virtual std::shared_ptr<CVPixelBufferPool> pixelBufferPool() = 0;

    /// As `appendSampleBuffer`.
    virtual bool appendPixelBuffer(const CVPixelBufferRef& buffer, MediaTime presentationTime) = 0;
};

/// Any thread. A file appears under its name when the writer has completed, whole, and at no other
/// time; an existing file is not replaced. A writer that goes before leaves no file.
class AVAssetWriter {
public:
    virtual ~AVAssetWriter() = default;

    /// False for an input that is added already, for a second one of a media type, for settings
    /// that can't be encoded, and once writing has started.
    virtual bool canAddInput(const AVAssetWriterInput& input) const = 0;
    /// An input that `canAddInput` refuses is a broken invariant.
    virtual void addInput(const AVAssetWriterInputRef& input) = 0;

    /// Once. False where the file can't be made; the status is failed then.
    virtual bool startWriting() = 0;
    /// Samples before `time` are cut off, and `time` becomes the start of the movie. Nothing
    /// happens where the writer is not writing.
    virtual void startSessionAtSourceTime(MediaTime time) = 0;

    /// Drops everything; inputs become ready, and appends fail. Only a writer that is writing
    /// takes it.
    virtual void cancelWriting() = 0;

    /// Marks all inputs as finished and returns at once. `handler` runs once, on a thread of the
    /// platform's own that may drop the writer: when the file is there, or when the writer failed
    /// or was cancelled. A movie without any sample fails.
    virtual void finishWritingWithCompletionHandler(std::function<void()> handler) = 0;

    virtual AVAssetWriterStatus status() const = 0;
    /// Set while the status is failed.
    virtual std::optional<Error> error() const = 0;
};

}  // namespace quillmere
