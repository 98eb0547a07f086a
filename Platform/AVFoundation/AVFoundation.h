// Movies in and out: where readers, writers and their parts are made.
#pragma once

#include <filesystem>
#include <memory>

#include "Base/Result.h"
#include "Platform/AVFoundation/AVAsset.h"
#include "Platform/AVFoundation/AVAssetImageGenerator.h"
#include "Platform/AVFoundation/AVAssetReader.h"
#include "Platform/AVFoundation/AVAssetWriter.h"

namespace quillmere {

/// Codes of errors in the domain `AVFoundation::errorDomain`. Their texts are whole sentences.
enum class AVErrorCode {
    unknown = -11800,
    outOfMemory = -11801,
    diskFull = -11807,
    noDataCaptured = -11818,  // a movie would hold no sample
    decodeFailed = -11821,
    fileAlreadyExists = -11823,
    fileFormatNotRecognized = -11828,
    fileFailedToParse = -11829,  // damaged or cut off
    decoderNotFound = -11833,
    encoderNotFound = -11834,
    noImageAtTime = -11832,
    invalidSample = -11841,  // appended out of order, or to the wrong input
};

/// May be called from any thread. What it makes may outlive each other, but not this.
class AVFoundation {
public:
    static constexpr const char* errorDomain = "AVFoundationErrorDomain";

    virtual ~AVFoundation() = default;

    /// `initWithURL:options:` of `AVURLAsset` with no options. Never null; blocks while the file
    /// is looked at. What can't be read has no tracks, and a reader of it fails with the reason.
    virtual AVAssetRef assetWithURL(const std::filesystem::path& url) = 0;

    /// Fails for an asset that can't be read.
    virtual Result<std::shared_ptr<AVAssetReader>> assetReaderWithAsset(
        const AVAssetRef& asset) = 0;
    virtual AVAssetReaderTrackOutputRef assetReaderTrackOutput(
        const AVAssetTrackRef& track, const AVReaderOutputSettings& outputSettings) = 0;

    /// Fails where no such file could be made. Nothing is written yet.
    virtual Result<std::shared_ptr<AVAssetWriter>> assetWriterWithURL(
        const std::filesystem::path& url, AVFileType fileType) = 0;
    /// Its settings tell the media type.
    virtual AVAssetWriterInputRef assetWriterInput(
        const AVWriterOutputSettings& outputSettings) = 0;
    /// Before the input is added.
    virtual std::shared_ptr<AVAssetWriterInputPixelBufferAdaptor> pixelBufferAdaptor(
        const AVAssetWriterInputRef& input,
        const CVPixelBufferAttributes& sourcePixelBufferAttributes) = 0;

    virtual std::unique_ptr<AVAssetImageGenerator> assetImageGeneratorWithAsset(
        const AVAssetRef& asset) = 0;
};

}  // namespace quillmere
