// Single frames of a movie as pictures.
#pragma once

#include <functional>
#include <vector>

#include "Base/MediaTime.h"
#include "Base/Result.h"
#include "Platform/Graphics/CGImage.h"

namespace quillmere {

/// Used by one thread.
class AVAssetImageGenerator {
public:
    using CompletionHandler = std::function<void(MediaTime requestedTime, Result<CGImage> image)>;

    virtual ~AVAssetImageGenerator() = default;

    /// Whether pictures come upright, as the track's `preferredTransform` has them. False at
    /// first.
    virtual void setAppliesPreferredTrackTransform(bool applies) = 0;

    /// Returns at once. `handler` runs once for each time, one after another, on a background
    /// thread, with a frame near that time: for zero the first one. It runs on without its
    /// generator.
    virtual void generateCGImagesAsynchronouslyForTimes(std::vector<MediaTime> times,
                                                        CompletionHandler handler) = 0;
};

}  // namespace quillmere
