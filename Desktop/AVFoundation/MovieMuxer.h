// Coded packets of several tracks on their way into one QuickTime file.
#pragma once

#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "Base/Geometry.h"
#include "Base/Result.h"
#include "Desktop/AVFoundation/FFmpegHandles.h"
#include "Desktop/AVFoundation/MovieFile.h"

namespace quillmere {

/// The file's head can be written once it is known of each track how it is coded, or that it holds
/// nothing; packets that come before wait. Times are written in the units in which they come.
/// Every operation answers 0 or an error of FFmpeg. Any thread.
class MovieMuxer {
public:
    explicit MovieMuxer(const std::filesystem::path& path) : file_(std::in_place, path) {}

    Result<void> open() { return file_->open(); }
    /// Before any packet; answers the track's number.
    std::size_t addTrack();

    int describe(std::size_t track, const AVCodecContext& codec, const AffineTransform& transform);
    /// The track holds nothing.
    int omit(std::size_t track);
    /// Takes the packet, whose times are in the codec's units.
    int write(std::size_t track, AVPacketRef packet);

    /// After the last packet: brings everything to the disk. AVERROR_EOF where no track holds
    /// anything.
    int finish();
    int commit();
    /// Drops the file.
    void discard();

private:
    struct Track {
        std::shared_ptr<AVCodecParameters> coded;  // null while it isn't known
        AVRational unit{0, 1};
        AffineTransform transform;
        bool isOmitted = false;
        AVStream* stream = nullptr;
    };

    int writeHeadIfKnown();
    int addStream(Track& track);
    int writeNow(const Track& track, AVPacket& packet);

    std::mutex mutex_;
    std::optional<MovieFile> file_;  // gone after `discard`
    AVOutputRef output_;
    std::vector<Track> tracks_;
    std::vector<std::pair<std::size_t, AVPacketRef>> waiting_;
    bool hasHead_ = false;
};

}  // namespace quillmere
