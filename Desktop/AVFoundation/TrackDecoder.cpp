#include "Desktop/AVFoundation/TrackDecoder.h"

#include <algorithm>
#include <new>
#include <thread>
#include <utility>

#include "Desktop/AVFoundation/MovieError.h"

namespace quillmere {
namespace {

// More would hold more frames in memory than it gains.
constexpr unsigned mostThreads = 8;

}  // namespace

Result<std::unique_ptr<TrackDecoder>> TrackDecoder::open(
    const std::filesystem::path& path, int stream,
    std::shared_ptr<const std::atomic<bool>> cancelled) {
    auto demuxer = Demuxer::open(path);
    if (!demuxer) return demuxer.error();
    // The file may have changed since it was looked at.
    if (static_cast<unsigned>(stream) >= demuxer->format().nb_streams) {
        return readingError(AVERROR_INVALIDDATA);
    }
    demuxer->selectStream(stream);
    const AVStream& source = demuxer->stream(stream);
    const AVCodec* decoder = avcodec_find_decoder(source.codecpar->codec_id);
    if (!decoder) return readingError(AVERROR_DECODER_NOT_FOUND);
    AVCodecContextRef codec(avcodec_alloc_context3(decoder));
    if (!codec) return movieOutOfMemory();
    int answer = avcodec_parameters_to_context(codec.get(), source.codecpar);
    codec->pkt_timebase = source.time_base;
    codec->thread_count =
        static_cast<int>(std::clamp(std::thread::hardware_concurrency(), 1u, mostThreads));
    if (answer >= 0) answer = avcodec_open2(codec.get(), decoder, nullptr);
    if (answer < 0) return readingError(answer);
    return std::unique_ptr<TrackDecoder>(
        new TrackDecoder(*std::move(demuxer), stream, std::move(codec), std::move(cancelled)));
}

TrackDecoder::TrackDecoder(Demuxer demuxer, int index, AVCodecContextRef codec,
                           std::shared_ptr<const std::atomic<bool>> cancelled)
    : demuxer_(std::move(demuxer)),
      index_(index),
      codec_(std::move(codec)),
      cancelled_(std::move(cancelled)),
      packet_(av_packet_alloc()) {
    if (!packet_) throw std::bad_alloc();
}

Result<AVFrameRef> TrackDecoder::next() {
    AVFrameRef frame(av_frame_alloc());
    if (!frame) return movieOutOfMemory();
    while (!cancelled_->load(std::memory_order_relaxed)) {
        int answer = avcodec_receive_frame(codec_.get(), frame.get());
        if (answer == AVERROR_EOF) return AVFrameRef();
        if (answer >= 0) {
            hasFrames_ = true;
            return frame;
        }
        if (answer == AVERROR(EAGAIN)) {
            answer = feed();
        } else if (isTolerable(answer)) {
            continue;
        }
        if (answer < 0) return readingError(answer);
    }
    return AVFrameRef();
}

/// One more packet for the decoder, or its end.
int TrackDecoder::feed() {
    const int answer = demuxer_.read(*packet_);
    if (answer == AVERROR_EOF) return avcodec_send_packet(codec_.get(), nullptr);
    if (answer < 0) return answer;
    const bool isBroadcast = (demuxer_.format().iformat->flags & AVFMT_TS_DISCONT) != 0;
    // The file ends inside this packet. (In a broadcast it is a disturbance.)
    if ((packet_->flags & AV_PKT_FLAG_CORRUPT) != 0 && !isBroadcast) return AVERROR_INVALIDDATA;
    const int sent = avcodec_send_packet(codec_.get(), packet_.get());
    return isTolerable(sent) ? 0 : sent;
}

bool TrackDecoder::isTolerable(int answer) const {
    return answer == AVERROR_INVALIDDATA && !hasFrames_;
}

void TrackDecoder::seek(std::int64_t time) {
    if (demuxer_.seek(index_, time)) avcodec_flush_buffers(codec_.get());
}

}  // namespace quillmere
