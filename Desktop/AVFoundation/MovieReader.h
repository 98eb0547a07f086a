// A reader of movie files and its outputs.
#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "Desktop/AVFoundation/MovieAsset.h"
#include "Desktop/AVFoundation/SampleSource.h"
#include "Platform/AVFoundation/AVAssetReader.h"

namespace quillmere {

/// What a reader shares with its outputs, which may outlive it.
class ReadingState {
public:
    AVAssetReaderStatus status() const;
    std::optional<Error> error() const;

    /// One more output that will have to end. False once reading has started.
    bool addOutput();
    bool start();
    void outputEnded();
    void fail(Error error);
    void cancel();

    /// Set at a cancel and at the reader's end, so that decoders give up.
    std::shared_ptr<std::atomic<bool>> cancelled = std::make_shared<std::atomic<bool>>(false);

private:
    mutable std::mutex mutex_;
    AVAssetReaderStatus status_ = AVAssetReaderStatus::unknown;
    std::optional<Error> error_;
    std::size_t unfinished_ = 0;
};

class MovieTrackOutput final : public AVAssetReaderTrackOutput {
public:
    MovieTrackOutput(std::shared_ptr<const MovieTrack> track, AVReaderOutputSettings settings);

    /// Samples always have memory of their own.
    void setAlwaysCopiesSampleData(bool) override {}
    CMSampleBufferRef copyNextSampleBuffer() override;

    const MovieTrack& track() const { return *track_; }
    /// Whether the settings are of the track's kind and make sense.
    bool fits() const;
    bool isAdded() const { return reading_ != nullptr; }
    void attach(std::shared_ptr<ReadingState> reading) { reading_ = std::move(reading); }
    Result<void> open();

private:
    std::shared_ptr<const MovieTrack> track_;
    AVReaderOutputSettings settings_;
    std::shared_ptr<ReadingState> reading_;
    std::unique_ptr<SampleSource> source_;  // gone at the track's end, for its memory
};

class MovieReader final : public AVAssetReader {
public:
    explicit MovieReader(std::shared_ptr<const MovieAsset> asset) : asset_(std::move(asset)) {}
    ~MovieReader() override { reading_->cancel(); }

    bool canAddOutput(const AVAssetReaderTrackOutput& output) const override;
    void addOutput(const AVAssetReaderTrackOutputRef& output) override;
    bool startReading() override;
    void cancelReading() override { reading_->cancel(); }
    AVAssetReaderStatus status() const override { return reading_->status(); }
    std::optional<Error> error() const override { return reading_->error(); }

private:
    std::shared_ptr<const MovieAsset> asset_;
    std::shared_ptr<ReadingState> reading_ = std::make_shared<ReadingState>();
    std::vector<std::shared_ptr<MovieTrackOutput>> outputs_;
};

}  // namespace quillmere
