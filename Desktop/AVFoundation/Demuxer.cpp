#include "Desktop/AVFoundation/Demuxer.h"

#include <string_view>
#include <utility>

#include "Desktop/AVFoundation/MovieError.h"

namespace quillmere {
namespace {

/// QuickTime and Matroska files tell where on their timeline each track begins.
bool hasTimelineOfItsOwn(const AVInputFormat& format) {
    const std::string_view name = format.name;
    return name.starts_with("mov,") || name.starts_with("matroska,");
}

}  // namespace

Result<Demuxer> Demuxer::open(const std::filesystem::path& path) {
    AVFormatContext* opened = nullptr;
    AVDictionary* options = nullptr;
    av_dict_set(&options, "protocol_whitelist", "file", 0);
    // The prefix keeps a file's name from being taken for an address.
    int answer = avformat_open_input(&opened, ("file:" + path.string()).c_str(), nullptr, &options);
    av_dict_free(&options);
    if (answer < 0) return readingError(answer);
    AVInputRef input(opened);
    answer = avformat_find_stream_info(input.get(), nullptr);
    if (answer < 0) return readingError(answer);
    return Demuxer(std::move(input));
}

void Demuxer::selectStream(int index) {
    selected_ = index;
    for (unsigned i = 0; i < input_->nb_streams; ++i) {
        input_->streams[i]->discard =
            static_cast<int>(i) == index ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    }
}

int Demuxer::read(AVPacket& packet) {
    for (;;) {
        av_packet_unref(&packet);
        const int answer = av_read_frame(input_.get(), &packet);
        if (answer < 0 || packet.stream_index == selected_) return answer;
    }
}

bool Demuxer::seek(int stream, std::int64_t time) {
    return av_seek_frame(input_.get(), stream, time, AVSEEK_FLAG_BACKWARD) >= 0;
}

std::int64_t Demuxer::origin(int index) const {
    const std::int64_t start = input_->start_time;
    if (start == AV_NOPTS_VALUE || hasTimelineOfItsOwn(*input_->iformat)) return 0;
    return av_rescale_q(start, {1, AV_TIME_BASE}, stream(index).time_base);
}

}  // namespace quillmere
