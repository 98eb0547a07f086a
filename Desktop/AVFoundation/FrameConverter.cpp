#include "Desktop/AVFoundation/FrameConverter.h"

#include <utility>

#include "Desktop/AVFoundation/MovieError.h"
#include "Desktop/AVFoundation/PixelBufferFrame.h"

extern "C" {
#include <libavutil/mastering_display_metadata.h>
}

namespace quillmere {
namespace {

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

}  // namespace

Result<CVPixelBufferRef> FrameConverter::convert(const AVFrame& frame) {
    const FrameLayout source = FrameLayout::of(frame);
    if (!sws_isSupportedInput(source.format)) return readingError(AVERROR_PATCHWELCOME);
    updateColour(frame);
    if (standardColour_) return mapColours(frame, source);
    if (source == target_ && source.format == AV_PIX_FMT_YUV420P) {
        if (auto shared = bufferSharing(frame, pool_.format())) return shared;
        return movieOutOfMemory();
    }
    const auto buffer = pool_.createPixelBuffer();
    if (!buffer) return movieOutOfMemory();
    if (buffer->planeCount() == 1) {
        AVFrameRef kept(av_frame_clone(&frame));
        if (!kept) return movieOutOfMemory();
        buffer->setBacking(std::make_shared<DecodedFrame>(std::move(kept), shared_));
        return CVPixelBufferRef(buffer);
    }
    if (const auto change = matrixChange(source)) {
        change->apply(frame, *buffer);
        return CVPixelBufferRef(buffer);
    }
    const AVFrameRef result = frameSharing(buffer);
    if (!result) return movieOutOfMemory();
    const int answer = scaler_.scale(frame, source, *result, target_);
    if (answer < 0) return readingError(answer);
    return CVPixelBufferRef(buffer);
}

/// Where only matrix and range are to change.
std::optional<MatrixChange> FrameConverter::matrixChange(const FrameLayout& source) const {
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

Result<CVPixelBufferRef> FrameConverter::mapColours(const AVFrame& frame,
                                                    const FrameLayout& source) {
    const PixelSize size = pool_.size();
    const FrameLayout wide{size, AV_PIX_FMT_RGB48, AVCOL_SPC_BT709, true};
    if (!wide_) {
        wide_.reset(av_frame_alloc());
        if (!wide_) return movieOutOfMemory();
        wide_->format = wide.format;
        wide_->width = size.width;
        wide_->height = size.height;
        if (av_frame_get_buffer(wide_.get(), 0) < 0) return movieOutOfMemory();
    }
    int answer = wideScaler_.scale(frame, source, *wide_, wide);
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
    answer = scaler_.scale(*from, FrameLayout::of(*from), *to, target_);
    if (answer < 0) return readingError(answer);
    return CVPixelBufferRef(converted);
}

}  // namespace quillmere
