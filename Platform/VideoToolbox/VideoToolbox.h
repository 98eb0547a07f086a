// The system's frame scaler for movies.
#pragma once

namespace quillmere {

/// May be called from any thread.
class VideoToolbox {
public:
    virtual ~VideoToolbox() = default;

    /// Whether this machine can run the scaler at all.
    virtual bool superResolutionScalerIsSupported() const = 0;
};

}  // namespace quillmere
