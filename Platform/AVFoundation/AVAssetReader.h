// Decoding the tracks of a movie, sample by sample.
#pragma once

#include <memory>
#include <optional>
#include <variant>

#include "Base/Error.h"
#include "Platform/AVFoundation/AVAsset.h"
#include "Platform/AVFoundation/CMSampleBuffer.h"

namespace quillmere {

enum class AVAssetReaderStatus {
    unknown = 0,
    reading = 1,
    completed = 2,
    failed = 3,
    cancelled = 4
};

/// `AVFormatIDKey` and `AVSampleRateKey` of a reader. Sound of more than two channels is mixed
/// down to two.
struct AVAudioReaderSettings {
    AudioFormatID formatID = AudioFormatID::linearPCM;
    double sampleRate = 44100;  // in hertz
};

using AVReaderOutputSettings = std::variant<CVPixelBufferAttributes, AVAudioReaderSettings>;

/// One track's samples in the order of presentation: times never go back, frames' times always
/// go forward, and nothing lies before the start of the movie.
///
/// Each output reads the file for itself, so that one that nobody reads holds up no other. One
/// thread at a time; different outputs may be read at once.
class AVAssetReaderTrackOutput {
public:
    virtual ~AVAssetReaderTrackOutput() = default;

    /// Whether each sample has memory of its own. A hint; before `startReading`.
    virtual void setAlwaysCopiesSampleData(bool copies) = 0;

    /// Blocks while the next sample is decoded. Null at the track's end, after a failure or a
    /// cancel of the reader, and while the reader is not started; the reader's `status` tells
    /// them apart.
    virtual CMSampleBufferRef copyNextSampleBuffer() = 0;
};

using AVAssetReaderTrackOutputRef = std::shared_ptr<AVAssetReaderTrackOutput>;

/// Any thread.
class AVAssetReader {
public:
    virtual ~AVAssetReader() = default;

    /// False for an output of another asset or one that is added already, for settings that don't
    /// fit the track, for a track that nothing here can decode, and once reading has started.
    virtual bool canAddOutput(const AVAssetReaderTrackOutput& output) const = 0;
    /// An output that `canAddOutput` refuses is a broken invariant.
    virtual void addOutput(const AVAssetReaderTrackOutputRef& output) = 0;

    /// Once. False where nothing can be read; the status is failed then.
    virtual bool startReading() = 0;
    /// Makes outputs give nothing from now on; one that is at work ends soon. A reader that is
    /// not reading stays as it is.
    virtual void cancelReading() = 0;

    /// Completed once every output has given its last sample.
    virtual AVAssetReaderStatus status() const = 0;
    /// Set while the status is failed.
    virtual std::optional<Error> error() const = 0;
};

}  // namespace quillmere
