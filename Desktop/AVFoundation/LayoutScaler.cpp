#include "Desktop/AVFoundation/LayoutScaler.h"

#include <algorithm>
#include <thread>

extern "C" {
#include <libavutil/opt.h>
}

namespace quillmere {
namespace {

constexpr int scalingQuality =
    SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_FULL_CHR_H_INP;

int coefficientsOf(AVColorSpace matrix) {
    switch (matrix) {
        case AVCOL_SPC_BT709:
            return SWS_CS_ITU709;
        case AVCOL_SPC_FCC:
            return SWS_CS_FCC;
        case AVCOL_SPC_SMPTE240M:
            return SWS_CS_SMPTE240M;
        case AVCOL_SPC_BT2020_NCL:
        case AVCOL_SPC_BT2020_CL:
            return SWS_CS_BT2020;
        default:
            return SWS_CS_ITU601;
    }
}

}  // namespace

int LayoutScaler::scale(const AVFrame& from, const FrameLayout& source, AVFrame& to,
                        const FrameLayout& result) {
    if (!context_ || from_ != source || to_ != result) {
        if (const int answer = prepare(source, result); answer < 0) return answer;
    }
    return sws_scale_frame(context_.get(), &to, &from);
}

int LayoutScaler::prepare(const FrameLayout& source, const FrameLayout& result) {
    context_.reset(sws_alloc_context());
    SwsContext* context = context_.get();
    if (!context) return AVERROR(ENOMEM);
    av_opt_set_int(context, "srcw", source.size.width, 0);
    av_opt_set_int(context, "srch", source.size.height, 0);
    av_opt_set_int(context, "src_format", source.format, 0);
    av_opt_set_int(context, "dstw", result.size.width, 0);
    av_opt_set_int(context, "dsth", result.size.height, 0);
    av_opt_set_int(context, "dst_format", result.format, 0);
    av_opt_set_int(context, "sws_flags", scalingQuality, 0);
    av_opt_set_int(context, "src_range", source.isFullRange, 0);
    av_opt_set_int(context, "dst_range", result.isFullRange, 0);
    av_opt_set_int(context, "threads",
                   std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 1, 8), 0);
    const int answer = sws_init_context(context, nullptr, nullptr);
    if (answer < 0) {
        context_.reset();
        return answer;
    }
    constexpr int one = 1 << 16;
    sws_setColorspaceDetails(context, sws_getCoefficients(coefficientsOf(source.matrix)),
                             source.isFullRange, sws_getCoefficients(coefficientsOf(result.matrix)),
                             result.isFullRange, 0, one, one);
    from_ = source;
    to_ = result;
    return 0;
}

}  // namespace quillmere
