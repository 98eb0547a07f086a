// What a movie's writer shares with its inputs and the encoders' threads.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

#include "Desktop/AVFoundation/MovieMuxer.h"
#include "Desktop/AVFoundation/SampleEncoder.h"
#include "Platform/AVFoundation/AVAssetWriter.h"

namespace quillmere {

/// The rules of readiness, failure and completion, for any number of tracks. One mutex guards it
/// all; nothing foreign runs under it. Each track encodes on a serial queue of its own, whose
/// blocks keep this alive, so that a writer may go at any moment, on any thread. Any thread.
class WritingState : public std::enable_shared_from_this<WritingState> {
public:
    using TrackNumber = std::size_t;
    using MakeEncoder =
        std::function<std::unique_ptr<SampleEncoder>(MovieMuxer&, const MediaTime& sessionStart)>;

    WritingState(std::filesystem::path path, Dispatch& dispatch);

    AVAssetWriterStatus status() const;
    std::optional<Error> error() const;

    /// Only before `start`.
    TrackNumber addTrack(AVMediaType mediaType, const MakeEncoder& makeEncoder);
    bool start();
    void startSession(MediaTime time);
    void cancel();
    /// A cancel by a writer that goes: blocks are dropped, as they may hold what holds this.
    void abandon();
    void finish(std::function<void()> handler);

    bool isReady(TrackNumber track) const;
    bool append(TrackNumber track, const CMSampleBufferRef& sample);
    void markAsFinished(TrackNumber track);
    void request(TrackNumber track, std::shared_ptr<DispatchQueue> queue, Block block);

private:
    struct Track {
        AVMediaType mediaType;
        std::unique_ptr<SampleEncoder> encoder;
        std::shared_ptr<DispatchQueue> worker;
        std::size_t waiting = 0;  // samples that are not encoded yet
        MediaTime last;           // of the last sample; unknown before the first
        bool isFinished = false;  // by its owner
        bool isDrained = false;   // nothing of it will reach the muxer any more
        std::shared_ptr<DispatchQueue> queue;
        std::shared_ptr<const Block> block;
        bool isPosted = false;
        bool hasChanged = false;  // something that the block may not have seen yet
    };

    // The mutex is held by the callers of these.
    bool isReadyLocked(const Track& track) const;
    bool isOnlyUnfinished(const Track& track) const;
    bool isFarAhead(const Track& track) const;
    bool hasRoom(const Track& track) const;
    void changedLocked();
    void postIfDue(TrackNumber number);
    void completeIfDrained();

    // And is not held by the callers of these.
    void runBlock(TrackNumber number);
    void encode(TrackNumber number, const CMSampleBufferRef& sample);
    void drain(TrackNumber number);
    void complete();
    void end(AVAssetWriterStatus status, std::optional<Error> error);

    Dispatch& dispatch_;
    mutable std::mutex mutex_;
    std::condition_variable room_;
    AVAssetWriterStatus status_ = AVAssetWriterStatus::unknown;
    std::optional<Error> error_;
    MediaTime sessionStart_;
    MovieMuxer muxer_;
    std::deque<Track> tracks_;  // none ever moves or goes
    std::function<void()> handler_;
    bool isCompleting_ = false;
};

}  // namespace quillmere
