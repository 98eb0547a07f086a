#include "Desktop/AVFoundation/WritingState.h"

#include <algorithm>
#include <new>
#include <utility>
#include <vector>

#include "Base/Invariant.h"
#include "Desktop/AVFoundation/MovieError.h"

namespace quillmere {
namespace {

// Enough that an encoder never waits for whoever reads and enlarges, and no more.
constexpr std::size_t mostFrames = 4;
constexpr std::size_t mostSounds = 32;
// How far one track may run ahead of another: what lies between waits in the muxer's memory.
constexpr double mostSecondsAhead = 2;

}  // namespace

WritingState::WritingState(std::filesystem::path path, Dispatch& dispatch)
    : dispatch_(dispatch), muxer_(std::move(path)) {}

AVAssetWriterStatus WritingState::status() const {
    const std::lock_guard lock(mutex_);
    return status_;
}

std::optional<Error> WritingState::error() const {
    const std::lock_guard lock(mutex_);
    return error_;
}

WritingState::TrackNumber WritingState::addTrack(AVMediaType mediaType,
                                                 const MakeEncoder& makeEncoder) {
    const std::lock_guard lock(mutex_);
    if (status_ != AVAssetWriterStatus::unknown) invariantBroken();
    Track& track = tracks_.emplace_back();
    track.mediaType = mediaType;
    track.encoder = makeEncoder(muxer_, sessionStart_);
    track.worker =
        dispatch_.makeSerialQueue(mediaType == AVMediaType::video ? "videoEncoder" : "audioEncoder",
                                  QualityOfService::userInitiated);
    return tracks_.size() - 1;
}

bool WritingState::start() {
    const std::lock_guard lock(mutex_);
    if (status_ != AVAssetWriterStatus::unknown) return false;
    const auto opened = muxer_.open();
    status_ = opened ? AVAssetWriterStatus::writing : AVAssetWriterStatus::failed;
    if (!opened) error_ = opened.error();
    changedLocked();
    return status_ == AVAssetWriterStatus::writing;
}

void WritingState::startSession(MediaTime time) {
    const std::lock_guard lock(mutex_);
    if (status_ == AVAssetWriterStatus::writing) sessionStart_ = time;
}

void WritingState::cancel() { end(AVAssetWriterStatus::cancelled, {}); }

void WritingState::abandon() {
    cancel();
    std::vector<std::shared_ptr<const Block>> blocks;  // dropped after the mutex
    const std::lock_guard lock(mutex_);
    for (Track& track : tracks_) blocks.push_back(std::exchange(track.block, nullptr));
}

void WritingState::end(AVAssetWriterStatus status, std::optional<Error> error) {
    {
        const std::lock_guard lock(mutex_);
        if (status_ != AVAssetWriterStatus::writing) return;
        status_ = status;
        error_ = std::move(error);
        changedLocked();
    }
    muxer_.discard();
}

bool WritingState::isReady(TrackNumber number) const {
    const std::lock_guard lock(mutex_);
    return isReadyLocked(tracks_[number]);
}

bool WritingState::isReadyLocked(const Track& track) const {
    if (track.isFinished || status_ == AVAssetWriterStatus::unknown) return false;
    if (status_ != AVAssetWriterStatus::writing || isOnlyUnfinished(track)) return true;
    return hasRoom(track) && !isFarAhead(track);
}

bool WritingState::isOnlyUnfinished(const Track& track) const {
    return std::all_of(tracks_.begin(), tracks_.end(),
                       [&](const Track& other) { return &other == &track || other.isFinished; });
}

bool WritingState::isFarAhead(const Track& track) const {
    const auto place = [&](const Track& any) {
        return (any.last.isKnown() ? any.last : sessionStart_).seconds();
    };
    return std::any_of(tracks_.begin(), tracks_.end(), [&](const Track& other) {
        return &other != &track && !other.isFinished &&
               place(track) - place(other) > mostSecondsAhead;
    });
}

bool WritingState::hasRoom(const Track& track) const {
    return track.waiting < (track.mediaType == AVMediaType::video ? mostFrames : mostSounds);
}

bool WritingState::append(TrackNumber number, const CMSampleBufferRef& sample) {
    Track& track = tracks_[number];
    const bool isVideo = track.mediaType == AVMediaType::video;
    const bool isKind = isVideo ? sample->imageBuffer() != nullptr : sample->audioData() != nullptr;
    const MediaTime time = sample->presentationTimeStamp();
    {
        std::unique_lock lock(mutex_);
        if (status_ == AVAssetWriterStatus::writing && !sessionStart_.isKnown()) invariantBroken();
        room_.wait(lock, [&] {
            return hasRoom(track) || track.isFinished || status_ != AVAssetWriterStatus::writing;
        });
        if (track.isFinished || status_ != AVAssetWriterStatus::writing) return false;
        const bool isLater = !isVideo || !track.last.isKnown() || time > track.last;
        if (isKind && time.isKnown() && isLater) {
            ++track.waiting;
            track.last = time;
            changedLocked();
            track.worker->async(
                [self = shared_from_this(), number, sample] { self->encode(number, sample); });
            return true;
        }
    }
    end(AVAssetWriterStatus::failed,
        movieError(AVErrorCode::invalidSample, "The movie's samples are out of order."));
    return false;
}

void WritingState::encode(TrackNumber number, const CMSampleBufferRef& sample) {
    Track& track = tracks_[number];
    if (status() == AVAssetWriterStatus::writing) {
        try {
            const auto encoded = track.encoder->encode(*sample);
            if (!encoded) end(AVAssetWriterStatus::failed, encoded.error());
        } catch (const std::bad_alloc&) {
            end(AVAssetWriterStatus::failed, movieOutOfMemory());
        }
    }
    const std::lock_guard lock(mutex_);
    --track.waiting;
    changedLocked();
}

void WritingState::markAsFinished(TrackNumber number) {
    // Dropped after the mutex: what the block holds may go with it.
    std::shared_ptr<const Block> block;
    std::shared_ptr<DispatchQueue> queue;
    const std::lock_guard lock(mutex_);
    Track& track = tracks_[number];
    if (track.isFinished || status_ == AVAssetWriterStatus::unknown) return;
    track.isFinished = true;
    block.swap(track.block);
    queue.swap(track.queue);
    changedLocked();
    track.worker->async([self = shared_from_this(), number] { self->drain(number); });
}

void WritingState::drain(TrackNumber number) {
    Track& track = tracks_[number];
    if (status() == AVAssetWriterStatus::writing) {
        try {
            const auto finished = track.encoder->finish();
            if (!finished) end(AVAssetWriterStatus::failed, finished.error());
        } catch (const std::bad_alloc&) {
            end(AVAssetWriterStatus::failed, movieOutOfMemory());
        }
    }
    const std::lock_guard lock(mutex_);
    track.encoder.reset();  // and the memory that it holds
    track.isDrained = true;
    completeIfDrained();
}

void WritingState::request(TrackNumber number, std::shared_ptr<DispatchQueue> queue, Block block) {
    const std::lock_guard lock(mutex_);
    Track& track = tracks_[number];
    if (track.isFinished) return;
    track.queue = std::move(queue);
    track.block = std::make_shared<const Block>(std::move(block));
    track.hasChanged = true;
    postIfDue(number);
}

void WritingState::changedLocked() {
    room_.notify_all();
    for (TrackNumber number = 0; number < tracks_.size(); ++number) {
        tracks_[number].hasChanged = true;
        postIfDue(number);
    }
}

void WritingState::postIfDue(TrackNumber number) {
    Track& track = tracks_[number];
    if (!track.block || track.isPosted || !track.hasChanged || !isReadyLocked(track)) return;
    track.isPosted = true;
    track.hasChanged = false;
    track.queue->async(
        [self = shared_from_this(), number, block = track.block, queue = track.queue] {
            (*block)();
            const std::lock_guard lock(self->mutex_);
            self->tracks_[number].isPosted = false;
            self->postIfDue(number);
        });
}

void WritingState::finish(std::function<void()> handler) {
    std::size_t count = 0;
    {
        const std::lock_guard lock(mutex_);
        if (handler_) return;
        handler_ = std::move(handler);
        // A writer that never started has nothing to drain.
        if (status_ == AVAssetWriterStatus::unknown) {
            for (Track& track : tracks_) track.isDrained = true;
        }
        count = tracks_.size();
    }
    for (TrackNumber number = 0; number < count; ++number) markAsFinished(number);
    const std::lock_guard lock(mutex_);
    completeIfDrained();
}

void WritingState::completeIfDrained() {
    const bool isDrained = std::all_of(tracks_.begin(), tracks_.end(),
                                       [](const Track& track) { return track.isDrained; });
    if (!handler_ || !isDrained || isCompleting_) return;
    isCompleting_ = true;
    dispatch_.globalQueue(QualityOfService::userInitiated).async([self = shared_from_this()] {
        self->complete();
    });
}

void WritingState::complete() {
    if (status() == AVAssetWriterStatus::writing) {
        int answer = muxer_.finish();
        if (answer >= 0) {
            const std::lock_guard lock(mutex_);
            if (status_ == AVAssetWriterStatus::writing) {
                answer = muxer_.commit();
                if (answer >= 0) status_ = AVAssetWriterStatus::completed;
            }
        }
        if (answer == AVERROR_EOF) {
            end(AVAssetWriterStatus::failed,
                movieError(AVErrorCode::noDataCaptured, "The movie would hold nothing."));
        } else if (answer < 0) {
            end(AVAssetWriterStatus::failed, writingError(answer));
        }
        muxer_.discard();
    }
    std::function<void()> handler;
    {
        const std::lock_guard lock(mutex_);
        handler = std::exchange(handler_, nullptr);
    }
    handler();
}

}  // namespace quillmere
