// What a movie holds, before anything of it is decoded.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

#include "Base/Geometry.h"
#include "Base/MediaTime.h"
#include "Platform/AudioToolbox/AudioToolbox.h"

namespace quillmere {

enum class AVMediaType { video, audio };

/// How a track's samples are coded, as far as callers ask.
class CMFormatDescription {
public:
    explicit CMFormatDescription(std::optional<AudioStreamBasicDescription> description = {})
        : description_(description) {}

    /// `CMAudioFormatDescriptionGetStreamBasicDescription`: nothing for what is no sound, or says
    /// too little of itself.
    const std::optional<AudioStreamBasicDescription>& streamBasicDescription() const {
        return description_;
    }

private:
    std::optional<AudioStreamBasicDescription> description_;
};

/// Immutable; any thread.
class AVAssetTrack {
public:
    virtual ~AVAssetTrack() = default;

    virtual AVMediaType mediaType() const = 0;
    /// Of the frames as they are stored, in square pixels, not turned. Zero for sound.
    virtual Size naturalSize() const = 0;
    /// How a stored frame is to be turned to be seen upright, y pointing down: a quarter turn
    /// with the clock has b = 1 and c = -1.
    virtual AffineTransform preferredTransform() const = 0;
    /// In bits a second; 0 where nothing is known.
    virtual float estimatedDataRate() const = 0;
    virtual std::vector<CMFormatDescription> formatDescriptions() const = 0;
};

using AVAssetTrackRef = std::shared_ptr<const AVAssetTrack>;

/// Immutable; any thread.
class AVAsset {
public:
    virtual ~AVAsset() = default;

    /// Zero where there is no movie, unknown where it doesn't say.
    virtual MediaTime duration() const = 0;
    /// In the order of the file; empty for a file that can't be read. Pictures attached to sound
    /// are no video tracks.
    virtual std::vector<AVAssetTrackRef> tracksWithMediaType(AVMediaType mediaType) const = 0;
};

using AVAssetRef = std::shared_ptr<const AVAsset>;

}  // namespace quillmere
