#include "Desktop/AVFoundation/DesktopAVFoundation.h"

#include <system_error>

#include "Desktop/AVFoundation/FrameGrabber.h"
#include "Desktop/AVFoundation/MovieAsset.h"
#include "Desktop/AVFoundation/MovieError.h"
#include "Desktop/AVFoundation/MovieReader.h"
#include "Desktop/AVFoundation/MovieWriter.h"

extern "C" {
#include <libavutil/log.h>
}

namespace quillmere {

DesktopAVFoundation::DesktopAVFoundation(Dispatch& dispatch) : dispatch_(dispatch) {
    av_log_set_level(AV_LOG_QUIET);
}

AVAssetRef DesktopAVFoundation::assetWithURL(const std::filesystem::path& url) {
    return std::make_shared<MovieAsset>(url);
}

Result<std::shared_ptr<AVAssetReader>> DesktopAVFoundation::assetReaderWithAsset(
    const AVAssetRef& asset) {
    auto own = std::static_pointer_cast<const MovieAsset>(asset);
    if (own->error()) return *own->error();
    return std::shared_ptr<AVAssetReader>(std::make_shared<MovieReader>(std::move(own)));
}

AVAssetReaderTrackOutputRef DesktopAVFoundation::assetReaderTrackOutput(
    const AVAssetTrackRef& track, const AVReaderOutputSettings& outputSettings) {
    return std::make_shared<MovieTrackOutput>(std::static_pointer_cast<const MovieTrack>(track),
                                              outputSettings);
}

Result<std::shared_ptr<AVAssetWriter>> DesktopAVFoundation::assetWriterWithURL(
    const std::filesystem::path& url, AVFileType) {
    std::error_code unknown;
    const auto folder = std::filesystem::absolute(url, unknown).parent_path();
    if (unknown || !std::filesystem::is_directory(folder, unknown)) {
        return movieError(AVErrorCode::unknown, "The folder for the movie does not exist.");
    }
    if (std::filesystem::exists(std::filesystem::symlink_status(url, unknown))) {
        return movieError(AVErrorCode::fileAlreadyExists,
                          "There is a file of the movie's name already.");
    }
    return std::shared_ptr<AVAssetWriter>(std::make_shared<MovieWriter>(url, dispatch_));
}

AVAssetWriterInputRef DesktopAVFoundation::assetWriterInput(
    const AVWriterOutputSettings& outputSettings) {
    return std::make_shared<MovieWriterInput>(outputSettings);
}

std::shared_ptr<AVAssetWriterInputPixelBufferAdaptor> DesktopAVFoundation::pixelBufferAdaptor(
    const AVAssetWriterInputRef& input,
    const CVPixelBufferAttributes& sourcePixelBufferAttributes) {
    return std::make_shared<MoviePixelBufferAdaptor>(
        std::static_pointer_cast<MovieWriterInput>(input), sourcePixelBufferAttributes);
}

std::unique_ptr<AVAssetImageGenerator> DesktopAVFoundation::assetImageGeneratorWithAsset(
    const AVAssetRef& asset) {
    return std::make_unique<FrameGrabber>(std::static_pointer_cast<const MovieAsset>(asset),
                                          dispatch_);
}

}  // namespace quillmere
