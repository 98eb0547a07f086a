#include "Desktop/AVFoundation/FrameLayout.h"

#include <cstdint>

#include "Desktop/AVFoundation/PixelBufferFrame.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace quillmere {
namespace {

bool hasFlag(AVPixelFormat format, std::uint64_t flag) {
    const AVPixFmtDescriptor* description = av_pix_fmt_desc_get(format);
    return description && (description->flags & flag) != 0;
}

AVColorSpace matrixOf(const AVFrame& frame) {
    if (frame.colorspace != AVCOL_SPC_UNSPECIFIED && frame.colorspace != AVCOL_SPC_RGB) {
        return frame.colorspace;
    }
    return frame.width >= 1280 || frame.height > 576 ? AVCOL_SPC_BT709 : AVCOL_SPC_BT470BG;
}

}  // namespace

FrameLayout FrameLayout::of(const AVFrame& frame) {
    const auto format = static_cast<AVPixelFormat>(frame.format);
    const bool isRGB = hasFlag(format, AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL);
    const bool isFullRange = isRGB || frame.color_range == AVCOL_RANGE_JPEG ||
                             format == AV_PIX_FMT_YUVJ420P || format == AV_PIX_FMT_YUVJ422P ||
                             format == AV_PIX_FMT_YUVJ444P || format == AV_PIX_FMT_YUVJ440P;
    return {{frame.width, frame.height},
            format,
            isRGB ? AVCOL_SPC_BT709 : matrixOf(frame),
            isFullRange};
}

FrameLayout FrameLayout::of(PixelSize size, CVPixelFormat format) {
    return {size, pixelFormatOf(format), AVCOL_SPC_BT709, format != CVPixelFormat::yCbCr8Planar420};
}

bool FrameLayout::hasAlpha() const { return hasFlag(format, AV_PIX_FMT_FLAG_ALPHA); }

}  // namespace quillmere
