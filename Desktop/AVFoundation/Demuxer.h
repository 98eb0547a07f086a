// A movie file, opened for the packets of its streams.
#pragma once

#include <cstdint>
#include <filesystem>

#include "Base/Result.h"
#include "Desktop/AVFoundation/FFmpegHandles.h"

namespace quillmere {

/// Reads local files only, whatever a playlist inside says. One thread.
class Demuxer {
public:
    /// Blocks while the file's beginning is looked at.
    static Result<Demuxer> open(const std::filesystem::path& path);

    const AVFormatContext& format() const { return *input_; }
    AVStream& stream(int index) const { return *input_->streams[static_cast<std::size_t>(index)]; }

    /// From now on `read` gives packets of this stream only.
    void selectStream(int index);

    /// 0, AVERROR_EOF, or another error of FFmpeg.
    int read(AVPacket& packet);

    /// Goes to the key frame at or before `time`, in the stream's units; false where it can't.
    bool seek(int stream, std::int64_t time);

    /// The time that counts as the start of the movie, in the stream's units. Files with a
    /// timeline of their own start at its zero, recordings of a broadcast with their first packet.
    std::int64_t origin(int stream) const;

private:
    explicit Demuxer(AVInputRef input) : input_(std::move(input)) {}

    AVInputRef input_;
    int selected_ = -1;
};

}  // namespace quillmere
