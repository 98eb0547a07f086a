// How the numbers of a frame are meant.
#pragma once

#include "Desktop/AVFoundation/FFmpegHandles.h"
#include "Platform/CoreImage/CVPixelBuffer.h"

namespace quillmere {

struct FrameLayout {
    PixelSize size;
    AVPixelFormat format = AV_PIX_FMT_NONE;
    AVColorSpace matrix = AVCOL_SPC_BT709;
    bool isFullRange = true;

    /// A frame without a matrix counts as BT.709 if it is high definition, as BT.601 otherwise.
    static FrameLayout of(const AVFrame& frame);
    static FrameLayout of(PixelSize size, CVPixelFormat format);

    bool hasAlpha() const;

    friend bool operator==(const FrameLayout&, const FrameLayout&) = default;
};

}  // namespace quillmere
