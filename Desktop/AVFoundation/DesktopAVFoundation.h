// Movies on the desktop: the FFmpeg libraries, in this process.
#pragma once

#include "Platform/AVFoundation/AVFoundation.h"
#include "Platform/Dispatch/Dispatch.h"

namespace quillmere {

/// Reads whatever FFmpeg can open, from local files; writes H.264 and AAC in QuickTime files.
/// FFmpeg's own messages are silenced, in the whole process.
class DesktopAVFoundation final : public AVFoundation {
public:
    /// Encoders and completions run on queues of `dispatch`, which must outlive all that is made
    /// here.
    explicit DesktopAVFoundation(Dispatch& dispatch);

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

private:
    Dispatch& dispatch_;
};

}  // namespace quillmere
