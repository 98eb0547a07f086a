#include "Desktop/AVFoundation/FrameConverter.h"

#include <algorithm>
#include <thread>
#include <utility>

#include "Desktop/AVFoundation/MovieError.h"
#include "Desktop/AVFoundation/PixelBufferFrame.h"

extern "C" {
#include <libavutil/mastering_display_metadata.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

namespace quillmere {
namespace {

constexpr int scalingQuality =
    SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_FULL_CHR_H_INP;

bool hasFlag(AVPixelFormat format, std::uint64_t flag) {
    const AVPixFmtDescriptor* description = av_pix_fmt_desc_get(format);
    return description && (description->flags & flag) != 0;
}

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

AVColorSpace matrixOf(const AVFrame& frame) {
    if (frame.colorspace != AVCOL_SPC_UNSPECIFIED && frame.colorspace != AVCOL_SPC_RGB) {
        return frame.colorspace;
    }
    return frame.width >= 1280 || frame.height > 576 ? AVCOL_SPC_BT709 : AVCOL_SPC_BT470BG;
}

/// Of the brightest part, as the frame tells it; 0 where it doesn't.
double peakOf(const AVFrame& frame) {
    if (const auto* side = av_frame_get_side_data(&frame, AV_FRAME_DATA_CONTENT_LIGHT_LEVEL)) {
        const auto& light = *reinterpret_cast<const AVContentLightMetadata*>(side->data);
        if (light.MaxCLL > 0) return light.MaxCLL;
    }
    if (const auto* side =
            av_frame_get_side_data(&frame, AV_FRAME_DATA_MASTERING_DISPLAY_METADATA)) {
        const auto& mastering = *reinterpret_cast<const AVMasteringDisplayMetadata*>(side->data);
        if (mastering.has_luminance) return av_q2d(mastering.max_luminance);
    }
    return 0;
}

void makeOpaque(CVPixelBuffer& buffer) {
    for (int y = 0; y < buffer.size().height; ++y) {
        std::uint8_t* row =
            buffer.baseAddress() + static_cast<std::size_t>(y) * buffer.bytesPerRow();
        for (int x = 0; x < buffer.size().width; ++x) row[4 * x + 3] = 255;
    }
}

}  // namespace

FrameConverter::Layout FrameConverter::layoutOf(const AVFrame& frame) {
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

FrameConverter::Layout FrameConverter::target() const {
    return {pool_.size(), pixelFormatOf(pool_.format()), AVCOL_SPC_BT709,
            pool_.format() != CVPixelFormat::yCbCr8Planar420};
}

Result<CVPixelBufferRef> FrameConverter::convert(const AVFrame& frame) {
    const Layout source = layoutOf(frame);
    updateColour(frame);
    if (standardColour_) return mapColours(frame, source);
    if (source == target() && source.format == AV_PIX_FMT_YUV420P) {
        if (auto shared = bufferSharing(frame, pool_.format())) return shared;
        return movieOutOfMemory();
    }
    const auto buffer = pool_.createPixelBuffer();
    if (!buffer) return movieOutOfMemory();
    if (const auto change = matrixChange(source)) {
        change->apply(frame, *buffer);
        return CVPixelBufferRef(buffer);
    }
    const AVFrameRef result = frameSharing(buffer);
    if (!result) return movieOutOfMemory();
    const int answer = scale(scaler_, frame, source, *result, target());
    if (answer < 0) return readingError(answer);
    if (buffer->planeCount() == 1 && hasFlag(source.format, AV_PIX_FMT_FLAG_ALPHA)) {
        makeOpaque(*buffer);
    }
    return CVPixelBufferRef(buffer);
}

/// Where only matrix and range are to change.
std::optional<MatrixChange> FrameConverter::matrixChange(const Layout& source) const {
    const bool isPlanar420 =
        source.format == AV_PIX_FMT_YUV420P || source.format == AV_PIX_FMT_YUVJ420P;
    const bool isAsked =
        pool_.format() == CVPixelFormat::yCbCr8Planar420 && source.size == pool_.size();
    if (!isPlanar420 || !isAsked) return {};
    return MatrixChange::of(source.matrix, source.isFullRange);
}

void FrameConverter::updateColour(const AVFrame& frame) {
    MovieColour colour{frame.color_trc, frame.color_primaries, colour_.peak};
    // Only key frames tell it.
    if (const double peak = peakOf(frame); peak > 0) colour.peak = peak;
    if (colour == colour_) return;
    colour_ = colour;
    standardColour_ = StandardColour::of(colour);
}

Result<CVPixelBufferRef> FrameConverter::mapColours(const AVFrame& frame, const Layout& source) {
    const PixelSize size = pool_.size();
    const Layout wide{size, AV_PIX_FMT_RGB48, AVCOL_SPC_BT709, true};
    if (!wide_) {
        wide_.reset(av_frame_alloc());
        if (!wide_) return movieOutOfMemory();
        wide_->format = wide.format;
        wide_->width = size.width;
        wide_->height = size.height;
        if (av_frame_get_buffer(wide_.get(), 0) < 0) return movieOutOfMemory();
    }
    int answer = scale(wideScaler_, frame, source, *wide_, wide);
    if (answer < 0) return readingError(answer);

    if (!mapped_) mapped_.emplace(size, CVPixelFormat::bgra8);
    const auto buffer = mapped_->createPixelBuffer();
    if (!buffer) return movieOutOfMemory();
    for (int y = 0; y < size.height; ++y) {
        const auto row = static_cast<std::size_t>(y);
        standardColour_->mapRow(
            reinterpret_cast<const std::uint16_t*>(wide_->data[0] + y * wide_->linesize[0]),
            buffer->baseAddress() + row * buffer->bytesPerRow(),
            static_cast<std::size_t>(size.width));
    }
    if (pool_.format() == CVPixelFormat::bgra8) return CVPixelBufferRef(buffer);

    const auto converted = pool_.createPixelBuffer();
    const AVFrameRef from = frameSharing(buffer);
    const AVFrameRef to = converted ? frameSharing(converted) : nullptr;
    if (!from || !to) return movieOutOfMemory();
    answer = scale(scaler_, *from, {size, AV_PIX_FMT_BGRA, AVCOL_SPC_BT709, true}, *to, target());
    if (answer < 0) return readingError(answer);
    return CVPixelBufferRef(converted);
}

int FrameConverter::scale(Scaler& scaler, const AVFrame& from, const Layout& source, AVFrame& to,
                          const Layout& result) {
    if (!scaler.context || scaler.from != source || scaler.to != result) {
        scaler = {source, result, SwsContextRef(sws_alloc_context())};
        SwsContext* context = scaler.context.get();
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
            scaler.context.reset();
            return answer;
        }
        constexpr int one = 1 << 16;
        sws_setColorspaceDetails(
            context, sws_getCoefficients(coefficientsOf(source.matrix)), source.isFullRange,
            sws_getCoefficients(coefficientsOf(result.matrix)), result.isFullRange, 0, one, one);
    }
    return sws_scale_frame(scaler.context.get(), &to, &from);
}

}  // namespace quillmere
