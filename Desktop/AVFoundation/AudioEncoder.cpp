#include "Desktop/AVFoundation/AudioEncoder.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "Desktop/AVFoundation/AACSampleRates.h"
#include "Desktop/AVFoundation/MovieError.h"

extern "C" {
#include <libavutil/channel_layout.h>
}

namespace quillmere {
namespace {

// Sound that is 45 ms early begins to be noticed (ITU-R BT.1359); containers with rough times
// stray by some milliseconds from sample to sample.
constexpr double tolerance = 0.04;

const AVCodec* aacEncoder() { return avcodec_find_encoder(AV_CODEC_ID_AAC); }

AVFrameRef floatFrame(const AVCodecContext& codec, int count) {
    AVFrameRef frame(av_frame_alloc());
    if (!frame) return nullptr;
    frame->format = AV_SAMPLE_FMT_FLTP;
    frame->nb_samples = count;
    frame->sample_rate = codec.sample_rate;
    if (av_channel_layout_copy(&frame->ch_layout, &codec.ch_layout) < 0) return nullptr;
    return av_frame_get_buffer(frame.get(), 0) < 0 ? nullptr : std::move(frame);
}

}  // namespace

std::vector<int> aacSampleRates() {
    std::vector<int> rates;
    const AVCodec* encoder = aacEncoder();
    for (const int* rate = encoder ? encoder->supported_samplerates : nullptr; rate && *rate > 0;
         ++rate) {
        rates.push_back(*rate);
    }
    return rates;
}

bool AudioEncoder::canEncode(const AVAudioOutputSettings& settings) {
    const std::vector<int> rates = aacSampleRates();
    const bool knowsRate = std::any_of(rates.begin(), rates.end(),
                                       [&](int rate) { return rate == settings.sampleRate; });
    return knowsRate && settings.formatID == AudioFormatID::mpeg4AAC &&
           (settings.numberOfChannels == 1 || settings.numberOfChannels == 2);
}

AudioEncoder::AudioEncoder(const AVAudioOutputSettings& settings, const MediaTime& sessionStart,
                           MovieMuxer& muxer)
    : settings_(settings), sessionStart_(sessionStart), muxer_(muxer), track_(muxer.addTrack()) {}

int AudioEncoder::open() {
    const AVCodec* encoder = aacEncoder();
    if (!encoder) return AVERROR_ENCODER_NOT_FOUND;
    codec_.reset(avcodec_alloc_context3(encoder));
    if (!codec_) return AVERROR(ENOMEM);
    const int rate = static_cast<int>(settings_.sampleRate);
    const int channels = static_cast<int>(settings_.numberOfChannels);
    codec_->sample_fmt = AV_SAMPLE_FMT_FLTP;
    codec_->sample_rate = rate;
    codec_->time_base = {1, rate};
    av_channel_layout_default(&codec_->ch_layout, channels);
    // Clear sound at common rates, and in step with what a low rate can carry.
    codec_->bit_rate = channels * std::min(96'000, 2 * rate);
    codec_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    const int answer = avcodec_open2(codec_.get(), encoder, nullptr);
    if (answer < 0) return answer;
    fifo_.reset(av_audio_fifo_alloc(AV_SAMPLE_FMT_FLTP, channels, 2 * codec_->frame_size));
    if (!fifo_) return AVERROR(ENOMEM);
    return muxer_.describe(track_, *codec_, {});
}

Result<void> AudioEncoder::encode(const CMSampleBuffer& sample) {
    const CMAudioData& audio = *sample.audioData();
    if (audio.format.mSampleRate != settings_.sampleRate || audio.format.mChannelsPerFrame == 0) {
        return movieError(AVErrorCode::invalidSample, "The sound has another rate than its track.");
    }
    int answer = codec_ ? 0 : open();
    if (answer < 0) return writingError(answer);
    const AVRational unit{1, rate()};
    const MediaTime time = sample.presentationTimeStamp();
    const std::int64_t place =
        av_rescale_q(time.value, {1, time.timescale}, unit) -
        av_rescale_q(sessionStart_.value, {1, sessionStart_.timescale}, unit);
    const auto count = static_cast<std::int64_t>(audio.frameCount());
    // Only the first sound has nothing to follow.
    const std::int64_t slack = received_ == 0 ? 0 : std::llround(tolerance * rate());
    const std::int64_t gap = place - received_;
    if (gap > slack) answer = addSilence(gap);
    const std::int64_t overlap = gap < -slack ? std::min(-gap, count) : 0;
    if (answer >= 0) answer = mix(audio, static_cast<std::size_t>(overlap));
    if (answer >= 0) answer = encodeWhole();
    if (answer < 0) return writingError(answer);
    return {};
}

/// Into the FIFO, with the track's number of channels.
int AudioEncoder::mix(const CMAudioData& audio, std::size_t firstFrame) {
    const std::uint32_t channels = audio.format.mChannelsPerFrame;
    if (!mixer_ || mixerChannels_ != channels) {
        AVChannelLayout from{};
        av_channel_layout_default(&from, static_cast<int>(channels));
        SwrContext* made = nullptr;
        int answer = swr_alloc_set_opts2(&made, &codec_->ch_layout, AV_SAMPLE_FMT_FLTP, rate(),
                                         &from, AV_SAMPLE_FMT_FLT, rate(), 0, nullptr);
        mixer_.reset(made);
        if (answer >= 0) answer = swr_init(made);
        if (answer < 0) return answer;
        mixerChannels_ = channels;
    }
    const int count = static_cast<int>(audio.frameCount() - firstFrame);
    if (count <= 0) return 0;
    const AVFrameRef mixed = floatFrame(*codec_, count);
    if (!mixed) return AVERROR(ENOMEM);
    const auto* in =
        reinterpret_cast<const std::uint8_t*>(audio.interleaved.data() + firstFrame * channels);
    const int converted = swr_convert(mixer_.get(), mixed->extended_data, count, &in, count);
    if (converted < 0) return converted;
    received_ += converted;
    return av_audio_fifo_write(fifo_.get(), reinterpret_cast<void**>(mixed->extended_data),
                               converted);
}

int AudioEncoder::addSilence(std::int64_t frames) {
    const AVFrameRef silence = floatFrame(*codec_, codec_->frame_size);
    if (!silence) return AVERROR(ENOMEM);
    av_samples_set_silence(silence->extended_data, 0, silence->nb_samples,
                           codec_->ch_layout.nb_channels, AV_SAMPLE_FMT_FLTP);
    int answer = 0;
    while (frames > 0 && answer >= 0) {
        const int count = static_cast<int>(std::min<std::int64_t>(frames, silence->nb_samples));
        answer = av_audio_fifo_write(fifo_.get(), reinterpret_cast<void**>(silence->extended_data),
                                     count);
        received_ += count;
        frames -= count;
        if (answer >= 0) answer = encodeWhole();
    }
    return answer;
}

/// As many of the encoder's frames as the FIFO fills.
int AudioEncoder::encodeWhole() {
    int answer = 0;
    while (answer >= 0 && av_audio_fifo_size(fifo_.get()) >= codec_->frame_size) {
        answer = encodeFrames(codec_->frame_size);
    }
    return answer;
}

int AudioEncoder::encodeFrames(int count) {
    const AVFrameRef frame = floatFrame(*codec_, count);
    if (!frame) return AVERROR(ENOMEM);
    const int answer =
        av_audio_fifo_read(fifo_.get(), reinterpret_cast<void**>(frame->extended_data), count);
    if (answer < 0) return answer;
    frame->pts = encoded_;
    encoded_ += count;
    return send(frame.get());
}

/// Null is the end. What comes out of the encoder goes to the muxer.
int AudioEncoder::send(const AVFrame* frame) {
    int answer = avcodec_send_frame(codec_.get(), frame);
    while (answer >= 0) {
        AVPacketRef packet(av_packet_alloc());
        if (!packet) return AVERROR(ENOMEM);
        answer = avcodec_receive_packet(codec_.get(), packet.get());
        if (answer >= 0) answer = muxer_.write(track_, std::move(packet));
    }
    return answer == AVERROR(EAGAIN) || answer == AVERROR_EOF ? 0 : answer;
}

Result<void> AudioEncoder::finish() {
    int answer = codec_ ? 0 : muxer_.omit(track_);
    if (codec_) {
        const int rest = av_audio_fifo_size(fifo_.get());
        if (rest > 0) answer = encodeFrames(rest);
        if (answer >= 0) answer = send(nullptr);
    }
    if (answer < 0) return writingError(answer);
    return {};
}

}  // namespace quillmere
