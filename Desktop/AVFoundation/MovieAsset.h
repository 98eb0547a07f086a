// A movie file, looked at once.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

#include "Desktop/AVFoundation/Demuxer.h"
#include "Platform/AVFoundation/AVAsset.h"

namespace quillmere {

class MovieTrack final : public AVAssetTrack {
public:
    MovieTrack(std::filesystem::path path, const Demuxer& demuxer, int stream);

    AVMediaType mediaType() const override { return mediaType_; }
    Size naturalSize() const override {
        return {static_cast<double>(size_.width), static_cast<double>(size_.height)};
    }
    AffineTransform preferredTransform() const override { return preferredTransform_; }
    float estimatedDataRate() const override { return estimatedDataRate_; }
    std::vector<CMFormatDescription> formatDescriptions() const override;

    const std::filesystem::path& path() const { return path_; }
    int stream() const { return stream_; }
    /// `naturalSize` in whole pixels.
    PixelSize size() const { return size_; }
    bool canBeDecoded() const { return canBeDecoded_; }

private:
    std::filesystem::path path_;
    int stream_;
    AVMediaType mediaType_;
    PixelSize size_;
    AffineTransform preferredTransform_;
    float estimatedDataRate_ = 0;
    AudioStreamBasicDescription sound_;
    bool canBeDecoded_;
};

class MovieAsset final : public AVAsset {
public:
    explicit MovieAsset(const std::filesystem::path& path);

    MediaTime duration() const override { return duration_; }
    std::vector<AVAssetTrackRef> tracksWithMediaType(AVMediaType mediaType) const override;

    /// Why the file can't be read.
    const std::optional<Error>& error() const { return error_; }
    bool owns(const AVAssetTrack& track) const;

private:
    MediaTime duration_ = MediaTime::zero();
    std::vector<std::shared_ptr<const MovieTrack>> tracks_;
    std::optional<Error> error_;
};

}  // namespace quillmere
