// The peer of our frame scaler: FFmpeg's, with Lanczos's filter.
#pragma once

#include <memory>

#include "Desktop/VideoToolbox/FrameScaler.h"

struct SwsContext;

namespace quillmere::benchmark {

/// Planar YUV 4:2:0 in and out. `exactly` asks for correct rounding, which takes more time.
class SoftwareScaler {
public:
    SoftwareScaler(PixelSize source, int factor, int threads, bool exactly);
    void scale(const scaler::SourceFrame& source, const scaler::TargetFrame& target);

private:
    struct Free {
        void operator()(SwsContext* context) const;
    };
    PixelSize source_;
    PixelSize target_;
    std::unique_ptr<SwsContext, Free> context_;
};

}  // namespace quillmere::benchmark
