// Decoded frames of any kind as pixel buffers of one kind.
#pragma once

#include <memory>
#include <optional>

#include "Base/Result.h"
#include "Desktop/AVFoundation/DecodedFrame.h"
#include "Desktop/AVFoundation/FFmpegHandles.h"
#include "Desktop/AVFoundation/LayoutScaler.h"
#include "Desktop/AVFoundation/MatrixChange.h"
#include "Desktop/AVFoundation/PixelBufferPool.h"
#include "Desktop/AVFoundation/StandardColour.h"

namespace quillmere {

/// Brings size, bits, matrix, range and colours to those of the format; transparency is left out.
/// One thread.
class FrameConverter {
public:
    FrameConverter(PixelSize size, CVPixelFormat format)
        : target_(FrameLayout::of(size, format)), pool_(size, format) {}

    /// Shares the frame's pixels where they are what is asked for. As RGB, a frame in standard
    /// colours is only the backing of its buffer: converted when somebody asks for its pixels.
    Result<CVPixelBufferRef> convert(const AVFrame& frame);

private:
    void updateColour(const AVFrame& frame);
    std::optional<MatrixChange> matrixChange(const FrameLayout& source) const;
    Result<CVPixelBufferRef> mapColours(const AVFrame& frame, const FrameLayout& source);

    FrameLayout target_;
    PixelBufferPool pool_;
    std::shared_ptr<SharedScaler> shared_ = std::make_shared<SharedScaler>();
    LayoutScaler scaler_;
    MovieColour colour_;
    std::optional<StandardColour> standardColour_;
    LayoutScaler wideScaler_;
    AVFrameRef wide_;  // 16 bits a channel, in the movie's own colours
    std::optional<PixelBufferPool> mapped_;
};

}  // namespace quillmere
