// A frame as its decoder made it, behind a pixel buffer of another layout.
#pragma once

#include <memory>
#include <mutex>

#include "Desktop/AVFoundation/LayoutScaler.h"

namespace quillmere {

/// A scaler that the frames of one movie share, whoever asks for their pixels.
struct SharedScaler {
    std::mutex mutex;
    LayoutScaler scaler;
};

/// Where nobody asks for pixels, an encoder takes the frame itself. In standard colours, which
/// matrix and range leave as they are.
class DecodedFrame final : public CVPixelBufferBacking {
public:
    DecodedFrame(AVFrameRef frame, std::shared_ptr<SharedScaler> shared);

    const AVFrame& frame() const { return *frame_; }
    void fill(CVPixelBuffer& buffer) const override;

private:
    AVFrameRef frame_;
    std::shared_ptr<SharedScaler> shared_;
};

}  // namespace quillmere
