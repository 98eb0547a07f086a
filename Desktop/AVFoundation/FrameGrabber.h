// Single frames of a movie as pictures.
#pragma once

#include <memory>
#include <vector>

#include "Desktop/AVFoundation/MovieAsset.h"
#include "Platform/AVFoundation/AVAssetImageGenerator.h"
#include "Platform/Dispatch/Dispatch.h"

namespace quillmere {

/// Gives the first frame, or the key frame at or before a later time.
class FrameGrabber final : public AVAssetImageGenerator {
public:
    FrameGrabber(std::shared_ptr<const MovieAsset> asset, Dispatch& dispatch)
        : asset_(std::move(asset)), dispatch_(dispatch) {}

    void setAppliesPreferredTrackTransform(bool applies) override { applies_ = applies; }
    void generateCGImagesAsynchronouslyForTimes(std::vector<MediaTime> times,
                                                CompletionHandler handler) override;

private:
    std::shared_ptr<const MovieAsset> asset_;
    Dispatch& dispatch_;
    bool applies_ = false;
};

}  // namespace quillmere
