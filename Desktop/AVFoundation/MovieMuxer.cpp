#include "Desktop/AVFoundation/MovieMuxer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <utility>

namespace quillmere {

std::size_t MovieMuxer::addTrack() {
    const std::lock_guard lock(mutex_);
    tracks_.emplace_back();
    return tracks_.size() - 1;
}

int MovieMuxer::describe(std::size_t number, const AVCodecContext& codec,
                         const AffineTransform& transform) {
    const std::lock_guard lock(mutex_);
    Track& track = tracks_[number];
    track.coded.reset(avcodec_parameters_alloc(),
                      [](AVCodecParameters* coded) { avcodec_parameters_free(&coded); });
    if (!track.coded) return AVERROR(ENOMEM);
    const int answer = avcodec_parameters_from_context(track.coded.get(), &codec);
    if (answer < 0) return answer;
    track.unit = codec.time_base;
    track.transform = transform;
    return writeHeadIfKnown();
}

int MovieMuxer::omit(std::size_t track) {
    const std::lock_guard lock(mutex_);
    tracks_[track].isOmitted = true;
    return writeHeadIfKnown();
}

int MovieMuxer::write(std::size_t track, AVPacketRef packet) {
    const std::lock_guard lock(mutex_);
    if (!file_) return AVERROR_EXIT;
    if (hasHead_) return writeNow(tracks_[track], *packet);
    waiting_.emplace_back(track, std::move(packet));
    return 0;
}

int MovieMuxer::writeHeadIfKnown() {
    const bool isKnown = std::all_of(tracks_.begin(), tracks_.end(),
                                     [](const Track& t) { return t.coded || t.isOmitted; });
    const bool isEmpty =
        std::all_of(tracks_.begin(), tracks_.end(), [](const Track& t) { return t.isOmitted; });
    if (!isKnown || isEmpty) return 0;
    if (!file_) return AVERROR_EXIT;
    AVFormatContext* made = nullptr;
    int answer = avformat_alloc_output_context2(&made, nullptr, "mov", nullptr);
    if (answer < 0) return answer;
    output_.reset(made);
    output_->pb = file_->io();
    output_->flags |= AVFMT_FLAG_CUSTOM_IO;
    int finest = 1000;
    for (Track& track : tracks_) {
        if (track.isOmitted) continue;
        answer = addStream(track);
        if (answer < 0) return answer;
        finest = std::max(finest, track.unit.den);
    }
    AVDictionary* options = nullptr;
    // Or a first frame that is not at zero would be moved to a whole millisecond.
    av_dict_set_int(&options, "movie_timescale", finest, 0);
    answer = avformat_write_header(output_.get(), &options);
    av_dict_free(&options);
    if (answer < 0) return answer;
    hasHead_ = true;
    for (auto& [track, packet] : std::exchange(waiting_, {})) {
        answer = writeNow(tracks_[track], *packet);
        if (answer < 0) return answer;
    }
    return 0;
}

int MovieMuxer::addStream(Track& track) {
    track.stream = avformat_new_stream(output_.get(), nullptr);
    if (!track.stream) return AVERROR(ENOMEM);
    track.stream->time_base = track.unit;
    const AffineTransform& t = track.transform;
    if (t != AffineTransform()) {
        std::array<std::int32_t, 9> matrix{};
        const double parts[] = {t.a, t.b, 0, t.c, t.d, 0, t.tx, t.ty};
        for (std::size_t i = 0; i < std::size(parts); ++i) {
            constexpr double one = 1 << 16, most = 32767;
            matrix[i] =
                static_cast<std::int32_t>(std::lround(std::clamp(parts[i], -most, most) * one));
        }
        matrix[8] = 1 << 30;
        std::uint8_t* side =
            av_stream_new_side_data(track.stream, AV_PKT_DATA_DISPLAYMATRIX, sizeof matrix);
        if (!side) return AVERROR(ENOMEM);
        std::copy_n(reinterpret_cast<const std::uint8_t*>(matrix.data()), sizeof matrix, side);
    }
    const int answer = avcodec_parameters_copy(track.stream->codecpar, track.coded.get());
    track.stream->codecpar->codec_tag = 0;
    return answer;
}

int MovieMuxer::writeNow(const Track& track, AVPacket& packet) {
    av_packet_rescale_ts(&packet, track.unit, track.stream->time_base);
    packet.stream_index = track.stream->index;
    return av_interleaved_write_frame(output_.get(), &packet);
}

int MovieMuxer::finish() {
    const std::lock_guard lock(mutex_);
    if (!file_) return AVERROR_EXIT;
    if (!hasHead_) return AVERROR_EOF;
    const int answer = av_write_trailer(output_.get());
    return answer < 0 ? answer : file_->flush();
}

int MovieMuxer::commit() {
    const std::lock_guard lock(mutex_);
    return file_ ? file_->commit() : AVERROR_EXIT;
}

void MovieMuxer::discard() {
    const std::lock_guard lock(mutex_);
    output_.reset();
    file_.reset();
    waiting_.clear();
}

}  // namespace quillmere
