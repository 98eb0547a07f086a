#include "Desktop/AVFoundation/VideoEncoder.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "Desktop/AVFoundation/MovieError.h"
#include "Desktop/AVFoundation/PixelBufferFrame.h"

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/opt.h>
}

namespace quillmere {
namespace {

constexpr double longestSide = 16384;

// A better preset costs time that the enlarging wants; a worse one shows at low data rates.
constexpr const char* preset = "veryfast";
// Where nobody asks for a data rate or a quality: next to nothing of the picture is lost.
constexpr float fullQuality = 0.66F;

/// x264's constant rate factor: from 51, the worst, to 1. At 0 it would lose nothing, in a profile
/// that hardly any player knows.
double rateFactor(float quality) { return 51 - 50.0 * std::clamp(quality, 0.0F, 1.0F); }

/// Holds a clip of a few seconds to its rate, too.
void keepToRate(AVCodecContext& codec, float bitsPerSecond) {
    constexpr double least = 1000, most = 2e9;
    const double rate = std::clamp<double>(bitsPerSecond, least, most);
    codec.bit_rate = std::llround(rate);
    // No second takes much more than its share, so that a short clip has no time to miss the rate.
    // Tighter still, the quality of a picture that changes would swing.
    codec.rc_max_rate = std::llround(1.1 * rate);
    codec.rc_buffer_size =
        static_cast<int>(std::min<double>(rate, std::numeric_limits<int>::max()));
    // Beyond 51 x264 leaves out ever more of what changes. At its own end, 69, nothing is left of a
    // picture; a clip of a few kilobits a second, of a still screen, say, would be grey.
    codec.qmax = 64;
}

/// Repeats the last column and row of a picture that is one less than the planes.
void repeatEdges(AVFrame& frame, PixelSize picture) {
    const int pitch = frame.linesize[0];
    std::uint8_t* luma = frame.data[0];
    if (picture.width < frame.width) {
        for (int y = 0; y < picture.height; ++y) {
            std::uint8_t* end = luma + y * pitch + picture.width;
            *end = end[-1];
        }
    }
    if (picture.height < frame.height) {
        const std::uint8_t* last = luma + (picture.height - 1) * pitch;
        std::copy_n(last, frame.width, luma + picture.height * pitch);
    }
}

}  // namespace

std::optional<PixelSize> VideoEncoder::frameSize(const AVVideoOutputSettings& settings) {
    const double width = std::floor(settings.width + 0.5);
    const double height = std::floor(settings.height + 0.5);
    const bool fits = width >= 1 && height >= 1 && width <= longestSide && height <= longestSide;
    if (!fits) return {};
    return PixelSize{static_cast<int>(width), static_cast<int>(height)};
}

VideoEncoder::VideoEncoder(const AVVideoOutputSettings& settings, const AffineTransform& transform,
                           const MediaTime& sessionStart, MovieMuxer& muxer)
    : settings_(settings),
      size_(*frameSize(settings)),
      converter_(size_, CVPixelFormat::yCbCr8Planar420),
      transform_(transform),
      sessionStart_(sessionStart),
      muxer_(muxer),
      track_(muxer.addTrack()) {}

int VideoEncoder::open(const CMSampleBuffer& first) {
    const AVCodec* encoder = avcodec_find_encoder_by_name("libx264");
    if (!encoder) return AVERROR_ENCODER_NOT_FOUND;
    codec_.reset(avcodec_alloc_context3(encoder));
    if (!codec_) return AVERROR(ENOMEM);
    codec_->width = (size_.width + 1) / 2 * 2;
    codec_->height = (size_.height + 1) / 2 * 2;
    codec_->pix_fmt = AV_PIX_FMT_YUV420P;
    codec_->time_base = {1, first.presentationTimeStamp().timescale};
    codec_->framerate = {30, 1};  // a first guess of the rate control; times are what counts
    codec_->color_range = AVCOL_RANGE_MPEG;
    codec_->color_primaries = AVCOL_PRI_BT709;
    codec_->color_trc = AVCOL_TRC_BT709;
    codec_->colorspace = AVCOL_SPC_BT709;
    codec_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    av_opt_set(codec_->priv_data, "preset", preset, 0);
    const bool hasRate = std::isfinite(settings_.averageBitRate) && settings_.averageBitRate > 0;
    if (hasRate && !settings_.quality) {
        keepToRate(*codec_, settings_.averageBitRate);
    } else {
        av_opt_set_double(codec_->priv_data, "crf",
                          rateFactor(settings_.quality.value_or(fullQuality)), 0);
    }
    const int answer = avcodec_open2(codec_.get(), encoder, nullptr);
    return answer < 0 ? answer : muxer_.describe(track_, *codec_, transform_);
}

Result<void> VideoEncoder::encode(const CMSampleBuffer& sample) {
    if (sample.presentationTimeStamp() < sessionStart_) return {};
    int answer = codec_ ? 0 : open(sample);
    if (answer < 0) return writingError(answer);
    const AVFrameRef frame = prepare(sample.imageBuffer());
    if (!frame) return movieOutOfMemory();
    const MediaTime time = sample.presentationTimeStamp();
    frame->pts = av_rescale_q(time.value, {1, time.timescale}, codec_->time_base) -
                 av_rescale_q(sessionStart_.value, {1, sessionStart_.timescale}, codec_->time_base);
    // Times that the track's unit can't tell apart.
    if (lastTime_) frame->pts = std::max(frame->pts, *lastTime_ + 1);
    noteDuration(sample, frame->pts);
    answer = send(frame.get());
    if (answer < 0) return writingError(answer);
    return {};
}

/// A frame lasts until the next one; the last one as long as it says, or as the one before.
void VideoEncoder::noteDuration(const CMSampleBuffer& sample, std::int64_t time) {
    std::int64_t duration = 0;
    if (lastTime_) {
        duration = time - *lastTime_;
        const auto before = durations_.find(*lastTime_);
        if (before != durations_.end()) before->second = duration;
    }
    const MediaTime own = sample.duration();
    if (own.isKnown()) {
        duration = av_rescale_q(own.value, {1, own.timescale}, codec_->time_base);
    }
    durations_[time] = std::max<std::int64_t>(duration, 1);
    lastTime_ = time;
}

/// A frame for the encoder. Null if memory ran out.
AVFrameRef VideoEncoder::prepare(const CVPixelBufferRef& image) {
    AVFrameRef pixels;
    const auto* decoded = dynamic_cast<const DecodedFrame*>(image->backing().get());
    if (!decoded && !(pixels = frameSharing(image))) return nullptr;
    const auto planar = converter_.convert(decoded ? decoded->frame() : *pixels);
    if (!planar) return nullptr;
    AVFrameRef frame = frameSharing(*planar);
    const bool isEven = size_.width % 2 == 0 && size_.height % 2 == 0;
    return !frame || isEven ? std::move(frame) : padded(std::move(frame));
}

/// With even sides. Null if memory ran out.
AVFrameRef VideoEncoder::padded(AVFrameRef picture) const {
    AVFrameRef frame(av_frame_alloc());
    if (!frame) return nullptr;
    frame->format = picture->format;
    frame->width = codec_->width;
    frame->height = codec_->height;
    if (av_frame_get_buffer(frame.get(), 0) < 0) return nullptr;
    for (int plane = 0; plane < 3; ++plane) {
        const PixelSize own = CVPixelBuffer::sizeOfPlane(size_, CVPixelFormat::yCbCr8Planar420,
                                                         static_cast<std::size_t>(plane));
        av_image_copy_plane(frame->data[plane], frame->linesize[plane], picture->data[plane],
                            picture->linesize[plane], own.width, own.height);
    }
    repeatEdges(*frame, size_);
    return frame;
}

/// Null is the end. What comes out of the encoder goes to the muxer.
int VideoEncoder::send(const AVFrame* frame) {
    int answer = avcodec_send_frame(codec_.get(), frame);
    while (answer >= 0) {
        AVPacketRef packet(av_packet_alloc());
        if (!packet) return AVERROR(ENOMEM);
        answer = avcodec_receive_packet(codec_.get(), packet.get());
        if (answer < 0) break;
        if (const auto node = durations_.extract(packet->pts)) {
            packet->duration = node.mapped();
        }
        answer = muxer_.write(track_, std::move(packet));
    }
    return answer == AVERROR(EAGAIN) || answer == AVERROR_EOF ? 0 : answer;
}

Result<void> VideoEncoder::finish() {
    const int answer = codec_ ? send(nullptr) : muxer_.omit(track_);
    if (answer < 0) return writingError(answer);
    return {};
}

}  // namespace quillmere
