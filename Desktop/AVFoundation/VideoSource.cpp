#include "Desktop/AVFoundation/VideoSource.h"

#include <algorithm>
#include <utility>

namespace quillmere {

VideoSource::VideoSource(std::unique_ptr<TrackDecoder> decoder, PixelSize size,
                         CVPixelFormat format)
    : decoder_(std::move(decoder)), converter_(size, format), unit_(decoder_->stream().time_base) {
    const AVRational rate = decoder_->stream().avg_frame_rate;
    usualDuration_ = rate.num > 0 && rate.den > 0 ? av_rescale_q(1, av_inv_q(rate), unit_) : 0;
}

Result<CMSampleBufferRef> VideoSource::next() {
    for (;;) {
        auto frame = decoder_->next();
        if (!frame) return frame.error();
        if (!*frame) return CMSampleBufferRef();
        const std::int64_t duration =
            (*frame)->pkt_duration > 0 ? (*frame)->pkt_duration : usualDuration_;
        std::int64_t time = timeOf(**frame);
        if (time < 0 && time + duration <= 0) continue;
        time = std::max({time, last_ + 1, std::int64_t{0}});
        auto image = converter_.convert(**frame);
        if (!image) return image.error();
        last_ = time;
        return std::make_shared<const CMSampleBuffer>(
            MediaTime{time * unit_.num, unit_.den},
            duration > 0 ? MediaTime{duration * unit_.num, unit_.den} : MediaTime{},
            *std::move(image));
    }
}

std::int64_t VideoSource::timeOf(const AVFrame& frame) const {
    if (frame.best_effort_timestamp != AV_NOPTS_VALUE) {
        return frame.best_effort_timestamp - decoder_->origin();
    }
    return last_ < 0 ? 0 : last_ + std::max<std::int64_t>(usualDuration_, 1);
}

}  // namespace quillmere
