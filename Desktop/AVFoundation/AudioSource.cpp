#include "Desktop/AVFoundation/AudioSource.h"

#include <algorithm>
#include <utility>

#include "Desktop/AVFoundation/MovieError.h"

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
}

namespace quillmere {

Result<CMSampleBufferRef> AudioSource::next() {
    for (;;) {
        auto frame = decoder_->next();
        if (!frame) return frame.error();
        if (!*frame) {
            if (isFlushed_ || !resampler_) return CMSampleBufferRef();
            isFlushed_ = true;
        }
        auto sample = resample(frame->get());
        if (!sample || *sample || isFlushed_) return sample;
    }
}

int AudioSource::makeResampler(const AVFrame& frame) {
    AVChannelLayout from{}, to{};
    int answer = frame.ch_layout.order == AV_CHANNEL_ORDER_UNSPEC
                     ? (av_channel_layout_default(&from, frame.ch_layout.nb_channels), 0)
                     : av_channel_layout_copy(&from, &frame.ch_layout);
    if (channels_ == 0) channels_ = std::min(frame.ch_layout.nb_channels, 2);
    av_channel_layout_default(&to, channels_);
    SwrContext* made = nullptr;
    if (answer >= 0) {
        answer = swr_alloc_set_opts2(&made, &to, AV_SAMPLE_FMT_FLT, rate_, &from,
                                     static_cast<AVSampleFormat>(frame.format), frame.sample_rate,
                                     0, nullptr);
    }
    resampler_.reset(made);
    // A mix of many channels must not get louder than full scale.
    if (answer >= 0) answer = av_opt_set_double(made, "rematrix_maxval", 1, 0);
    if (answer >= 0) answer = swr_init(made);
    av_channel_layout_uninit(&from);
    sourceFormat_ = frame.format;
    sourceRate_ = frame.sample_rate;
    sourceChannels_ = frame.ch_layout.nb_channels;
    return answer;
}

/// Null where nothing comes out. Without a frame, what the resampler still holds.
Result<CMSampleBufferRef> AudioSource::resample(const AVFrame* frame) {
    const bool isOther =
        frame && (frame->format != sourceFormat_ || frame->sample_rate != sourceRate_ ||
                  frame->ch_layout.nb_channels != sourceChannels_);
    if (isOther) {
        const int answer = makeResampler(*frame);
        if (answer < 0) return readingError(answer);
    }
    const std::int64_t held = swr_get_delay(resampler_.get(), rate_);
    std::int64_t time = next_;
    if (frame && frame->best_effort_timestamp != AV_NOPTS_VALUE) {
        time = av_rescale_q(frame->best_effort_timestamp - decoder_->origin(),
                            decoder_->stream().time_base, {1, rate_}) -
               held;
    }
    const int capacity = swr_get_out_samples(resampler_.get(), frame ? frame->nb_samples : 0);
    if (capacity < 0) return readingError(capacity);
    auto audio = std::make_shared<CMAudioData>();
    audio->format = {static_cast<double>(rate_), static_cast<std::uint32_t>(channels_)};
    const auto channels = static_cast<std::size_t>(channels_);
    audio->interleaved.resize(static_cast<std::size_t>(capacity) * channels);
    auto* out = reinterpret_cast<std::uint8_t*>(audio->interleaved.data());
    const int count =
        swr_convert(resampler_.get(), &out, capacity,
                    frame ? const_cast<const std::uint8_t**>(frame->extended_data) : nullptr,
                    frame ? frame->nb_samples : 0);
    if (count < 0) return readingError(count);
    audio->interleaved.resize(static_cast<std::size_t>(count) * channels);
    if (time < 0) {
        const auto cut = std::min<std::int64_t>(-time, count);
        audio->interleaved.erase(audio->interleaved.begin(),
                                 audio->interleaved.begin() + cut * channels_);
        time += cut;
    }
    next_ = time + static_cast<std::int64_t>(audio->frameCount());
    if (audio->interleaved.empty()) return CMSampleBufferRef();
    return std::make_shared<const CMSampleBuffer>(MediaTime{time, rate_}, std::move(audio));
}

}  // namespace quillmere
