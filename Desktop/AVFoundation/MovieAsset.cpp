#include "Desktop/AVFoundation/MovieAsset.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "Desktop/AVFoundation/MovieError.h"

namespace quillmere {
namespace {

/// In square pixels; never smaller than what is stored.
PixelSize squarePixels(const Demuxer& demuxer, AVStream& stream) {
    // FFmpeg asks for a context that it doesn't change.
    auto* format = const_cast<AVFormatContext*>(&demuxer.format());
    const AVRational aspect = av_guess_sample_aspect_ratio(format, &stream, nullptr);
    const PixelSize stored{stream.codecpar->width, stream.codecpar->height};
    if (aspect.num <= 0 || aspect.den <= 0) return stored;
    const double ratio = av_q2d(aspect);
    if (ratio > 16 || ratio < 1.0 / 16) return stored;  // nobody makes such pixels
    if (ratio >= 1) {
        return {static_cast<int>(std::lround(stored.width * ratio)), stored.height};
    }
    return {stored.width, static_cast<int>(std::lround(stored.height / ratio))};
}

AffineTransform transformOf(const AVStream& stream) {
    std::size_t size = 0;
    const auto* m = reinterpret_cast<const std::int32_t*>(
        av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, &size));
    if (!m || size < 9 * sizeof *m) return {};
    constexpr double one = 1 << 16;
    return {m[0] / one, m[1] / one, m[3] / one, m[4] / one, m[6] / one, m[7] / one};
}

/// Where a track doesn't say, what the file's size leaves for it.
double dataRateOf(const AVFormatContext& format, const AVStream& stream) {
    if (stream.codecpar->bit_rate > 0) return static_cast<double>(stream.codecpar->bit_rate);
    double rest = static_cast<double>(format.bit_rate);
    for (unsigned i = 0; i < format.nb_streams; ++i) {
        rest -=
            static_cast<double>(std::max<std::int64_t>(format.streams[i]->codecpar->bit_rate, 0));
    }
    return std::max(rest, 0.0);
}

MediaTime durationOf(const Demuxer& demuxer) {
    const AVFormatContext& format = demuxer.format();
    if (format.duration == AV_NOPTS_VALUE || format.duration <= 0) return {};
    std::int64_t end = format.duration;
    // FFmpeg counts from the first packet; the timeline may begin before it.
    if (demuxer.origin(0) == 0 && format.start_time != AV_NOPTS_VALUE) {
        end += std::max<std::int64_t>(format.start_time, 0);
    }
    return {end, AV_TIME_BASE};
}

bool isTrack(const AVStream& stream) {
    const AVCodecParameters& coded = *stream.codecpar;
    if (coded.codec_type == AVMEDIA_TYPE_AUDIO) return true;
    return coded.codec_type == AVMEDIA_TYPE_VIDEO && coded.width > 0 && coded.height > 0 &&
           (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) == 0;
}

}  // namespace

MovieTrack::MovieTrack(std::filesystem::path path, const Demuxer& demuxer, int stream)
    : path_(std::move(path)), stream_(stream) {
    AVStream& source = demuxer.stream(stream);
    const AVCodecParameters& coded = *source.codecpar;
    mediaType_ = coded.codec_type == AVMEDIA_TYPE_VIDEO ? AVMediaType::video : AVMediaType::audio;
    canBeDecoded_ = avcodec_find_decoder(coded.codec_id) != nullptr;
    estimatedDataRate_ = static_cast<float>(dataRateOf(demuxer.format(), source));
    if (mediaType_ == AVMediaType::video) {
        size_ = squarePixels(demuxer, source);
        preferredTransform_ = transformOf(source);
    } else {
        sound_ = {static_cast<double>(coded.sample_rate),
                  static_cast<std::uint32_t>(std::max(coded.ch_layout.nb_channels, 0))};
    }
}

std::vector<CMFormatDescription> MovieTrack::formatDescriptions() const {
    if (mediaType_ == AVMediaType::video || !(sound_.mSampleRate > 0)) {
        return {CMFormatDescription()};
    }
    return {CMFormatDescription(sound_)};
}

MovieAsset::MovieAsset(const std::filesystem::path& path) {
    const auto demuxer = Demuxer::open(path);
    if (!demuxer) {
        error_ = demuxer.error();
        return;
    }
    for (unsigned i = 0; i < demuxer->format().nb_streams; ++i) {
        const int stream = static_cast<int>(i);
        if (!isTrack(demuxer->stream(stream))) continue;
        tracks_.push_back(std::make_shared<MovieTrack>(path, *demuxer, stream));
    }
    if (tracks_.empty()) {
        error_ = movieError(AVErrorCode::fileFormatNotRecognized,
                            "The file holds neither pictures in motion nor sound.");
        return;
    }
    duration_ = durationOf(*demuxer);
}

std::vector<AVAssetTrackRef> MovieAsset::tracksWithMediaType(AVMediaType mediaType) const {
    std::vector<AVAssetTrackRef> found;
    for (const auto& track : tracks_) {
        if (track->mediaType() == mediaType) found.push_back(track);
    }
    return found;
}

bool MovieAsset::owns(const AVAssetTrack& track) const {
    return std::any_of(tracks_.begin(), tracks_.end(),
                       [&](const auto& own) { return own.get() == &track; });
}

}  // namespace quillmere
