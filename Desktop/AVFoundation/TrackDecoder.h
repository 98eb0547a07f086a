// The decoded frames of one track, pictures or sound.
#pragma once

#include <atomic>
#include <filesystem>
#include <memory>

#include "Base/Result.h"
#include "Desktop/AVFoundation/Demuxer.h"

namespace quillmere {

/// Each has a demuxer of its own. Decodes on demand, some frames ahead on threads of the decoder,
/// so that whoever works on a frame does so beside the decoding of the next ones. One thread.
class TrackDecoder {
public:
    /// `cancelled` makes `next` end soon, with null.
    static Result<std::unique_ptr<TrackDecoder>> open(
        const std::filesystem::path& path, int stream,
        std::shared_ptr<const std::atomic<bool>> cancelled);

    /// The next frame in the order of presentation; null after the last one. Damage is an error,
    /// but for packets before the first frame, as recordings of a broadcast have them.
    Result<AVFrameRef> next();

    /// Frames from the key frame at or before `time` on, in units of `stream`.
    void seek(std::int64_t time);

    const AVStream& stream() const { return demuxer_.stream(index_); }
    std::int64_t origin() const { return demuxer_.origin(index_); }

private:
    TrackDecoder(Demuxer demuxer, int index, AVCodecContextRef codec,
                 std::shared_ptr<const std::atomic<bool>> cancelled);

    int feed();
    bool isTolerable(int answer) const;

    Demuxer demuxer_;
    int index_;
    AVCodecContextRef codec_;
    std::shared_ptr<const std::atomic<bool>> cancelled_;
    AVPacketRef packet_;
    bool hasFrames_ = false;
};

}  // namespace quillmere
