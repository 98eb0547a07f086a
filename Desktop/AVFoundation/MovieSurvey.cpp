#include "Desktop/AVFoundation/MovieSurvey.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include "Desktop/AVFoundation/Demuxer.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace quillmere {
namespace {

void surveyPicture(const AVFormatContext& format, const AVStream& stream, MovieSurvey& survey) {
    const AVCodecParameters& coded = *stream.codecpar;
    if (const auto* pixels = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(coded.format))) {
        survey.bitsPerChannel = pixels->comp[0].depth;
        survey.isTransparent = (pixels->flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
    }
    survey.isHighDynamicRange =
        coded.color_trc == AVCOL_TRC_SMPTE2084 || coded.color_trc == AVCOL_TRC_ARIB_STD_B67;
    survey.frames = stream.nb_frames;
    const AVRational rate = stream.avg_frame_rate;
    if (survey.frames <= 0 && rate.num > 0 && rate.den > 0 && format.duration > 0) {
        const double seconds = static_cast<double>(format.duration) / AV_TIME_BASE;
        survey.frames = std::llround(seconds * av_q2d(rate));
    }
    survey.frames = std::max<std::int64_t>(survey.frames, 0);
}

void surveyTags(const AVDictionary* tags, MovieSurvey& survey) {
    for (const AVDictionaryEntry* entry = nullptr;
         (entry = av_dict_get(tags, "", entry, AV_DICT_IGNORE_SUFFIX));) {
        const std::string_view key = entry->key;
        if (key == "creation_time" || key == "date" || key.ends_with(".creationdate")) {
            survey.hasDate = true;
        }
        if (key.starts_with("location") || key.ends_with(".location.ISO6709")) {
            survey.hasPlace = true;
        }
    }
}

}  // namespace

std::optional<MovieSurvey> surveyMovie(const std::filesystem::path& file) {
    const auto demuxer = Demuxer::open(file);
    if (!demuxer) return std::nullopt;
    const AVFormatContext& format = demuxer->format();
    MovieSurvey survey;
    for (unsigned i = 0; i < format.nb_streams; ++i) {
        const AVStream& stream = *format.streams[i];
        const bool isAttached = (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) != 0;
        switch (stream.codecpar->codec_type) {
            case AVMEDIA_TYPE_VIDEO:
                if (isAttached) {
                    ++survey.otherTracks;
                } else if (++survey.videoTracks == 1) {
                    surveyPicture(format, stream, survey);
                }
                break;
            case AVMEDIA_TYPE_AUDIO:
                if (++survey.audioTracks == 1) {
                    survey.audioChannels = stream.codecpar->ch_layout.nb_channels;
                }
                break;
            case AVMEDIA_TYPE_SUBTITLE:
                ++survey.subtitleTracks;
                break;
            default:
                ++survey.otherTracks;
        }
    }
    survey.chapters = static_cast<int>(format.nb_chapters);
    surveyTags(format.metadata, survey);
    return survey;
}

}  // namespace quillmere
