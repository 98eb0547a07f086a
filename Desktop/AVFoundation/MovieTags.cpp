#include "Desktop/AVFoundation/MovieTags.h"

#include <cmath>
#include <memory>
#include <string_view>
#include <utility>

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/display.h>
}

namespace quillmere {
namespace {

struct InputCloser {
    void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
};
using Input = std::unique_ptr<AVFormatContext, InputCloser>;

Input open(const std::filesystem::path& file) {
    av_log_set_level(AV_LOG_QUIET);
    AVFormatContext* context = nullptr;
    // As a file and nothing else: a name with a colon is no address.
    const std::string url = "file:" + file.string();
    if (avformat_open_input(&context, url.c_str(), nullptr, nullptr) != 0) return nullptr;
    return Input(context);
}

bool isStillPicture(const AVFormatContext& context) {
    const std::string_view name = context.iformat->name;
    return name.find("image2") != name.npos || name.ends_with("_pipe");
}

bool isTurnedOnItsSide(const AVStream& stream) {
    const auto* matrix = reinterpret_cast<const std::int32_t*>(
        av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, nullptr));
    if (!matrix) return false;
    const double turn = std::abs(av_display_rotation_get(matrix));
    return turn > 45 && turn < 135;
}

const AVStream* firstVideo(const AVFormatContext& context) {
    for (unsigned i = 0; i < context.nb_streams; ++i) {
        const AVStream* stream = context.streams[i];
        if (stream->codecpar->codec_type != AVMEDIA_TYPE_VIDEO) continue;
        if ((stream->disposition & AV_DISPOSITION_ATTACHED_PIC) == 0) return stream;
    }
    return nullptr;
}

}  // namespace

std::optional<MovieTags> readMovieTags(const std::filesystem::path& file) {
    const Input context = open(file);
    if (!context || isStillPicture(*context)) return std::nullopt;
    // Some containers tell of their tracks at the beginning, others have to be looked into.
    if (!firstVideo(*context) && avformat_find_stream_info(context.get(), nullptr) < 0) {
        return std::nullopt;
    }
    const AVStream* video = firstVideo(*context);
    if (!video) return std::nullopt;

    MovieTags tags;
    tags.size = {video->codecpar->width, video->codecpar->height};
    if (isTurnedOnItsSide(*video)) std::swap(tags.size.width, tags.size.height);
    for (const AVDictionaryEntry* entry = nullptr;
         (entry = av_dict_get(context->metadata, "", entry, AV_DICT_IGNORE_SUFFIX));) {
        tags.texts[entry->key] = entry->value;
    }
    return tags;
}

}  // namespace quillmere
