// Movies in memory: read from lists of samples, and written to others that a test looks at.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Platform/AVFoundation/AVFoundation.h"
#include "Tests/Fakes/CallLog.h"

namespace quillmere {

/// A track that can be read.
struct FakeTrack {
    AVMediaType mediaType = AVMediaType::video;
    Size naturalSize;
    AffineTransform preferredTransform;
    float estimatedDataRate = 0;
    std::vector<CMFormatDescription> formatDescriptions;
    std::vector<CMSampleBufferRef> samples;
    std::optional<std::size_t> failsAfter;  // so many samples, then the reader fails
};

struct FakeMovie {
    MediaTime duration;
    std::vector<FakeTrack> tracks;
    std::optional<CGImage> still;  // what an image generator gives
};

/// A movie that was written, as it stands under its name.
struct FakeWrittenTrack {
    AVWriterOutputSettings settings;
    AffineTransform transform;
    std::vector<CMSampleBufferRef> samples;
};
using FakeWrittenMovie = std::map<AVMediaType, FakeWrittenTrack>;

/// Set the fields before the calls that they are about. Records `startReading`, `cancelReading`,
/// `startWriting`, `startSession 0`, `cancelWriting`, `finishWriting` and `addInput video`. Any
/// thread for the objects, one for the fields.
class FakeAVFoundation final : public AVFoundation {
public:
    FakeAVFoundation(CallLog& log, Dispatch& dispatch);
    ~FakeAVFoundation() override;

    /// By path; other paths have no tracks, and readers of them fail.
    std::map<std::filesystem::path, FakeMovie> movies;
    std::optional<Error> readerError;        // no reader can be made
    std::optional<Error> startReadingError;  // a reader fails when it starts
    std::set<AVMediaType> refusedOutputs;
    /// Called before each sample is handed out, on the thread that asks, with its index.
    std::function<void(AVMediaType, std::size_t)> beforeCopy;

    std::optional<Error> writerError;        // no writer can be made
    std::optional<Error> startWritingError;  // a writer fails when it starts
    std::optional<Error> finishError;        // a writer fails when it finishes
    std::set<AVMediaType> refusedInputs;
    std::optional<std::size_t> appendsUntilFailure;  // of all inputs of a writer together
    /// How many samples an input takes in one call of its block. Unlimited if not set.
    std::optional<std::size_t> room;
    bool poolIsMissing = false;
    bool poolIsEmpty = false;

    /// Keeps the input of every writer from being ready until it is let go.
    void hold(AVMediaType mediaType);
    void letGo(AVMediaType mediaType);

    std::map<std::filesystem::path, FakeWrittenMovie> written() const;
    /// Whether the last reader's output was told not to copy, by media type.
    std::map<AVMediaType, bool> copiesSampleData() const;

    AVAssetRef assetWithURL(const std::filesystem::path& url) override;
    Result<std::shared_ptr<AVAssetReader>> assetReaderWithAsset(const AVAssetRef& asset) override;
    AVAssetReaderTrackOutputRef assetReaderTrackOutput(
        const AVAssetTrackRef& track, const AVReaderOutputSettings& outputSettings) override;
    Result<std::shared_ptr<AVAssetWriter>> assetWriterWithURL(const std::filesystem::path& url,
                                                              AVFileType fileType) override;
    AVAssetWriterInputRef assetWriterInput(const AVWriterOutputSettings& outputSettings) override;
    std::shared_ptr<AVAssetWriterInputPixelBufferAdaptor> pixelBufferAdaptor(
        const AVAssetWriterInputRef& input,
        const CVPixelBufferAttributes& sourcePixelBufferAttributes) override;
    std::unique_ptr<AVAssetImageGenerator> assetImageGeneratorWithAsset(
        const AVAssetRef& asset) override;

    static Error failure(AVErrorCode code) {
        return {errorDomain, static_cast<int>(code), "The movie failed."};
    }

    struct Shared;

private:
    std::shared_ptr<Shared> shared_;
    CallLog& log_;
    Dispatch& dispatch_;
};

}  // namespace quillmere
