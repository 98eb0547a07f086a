// The reading half of FakeAVFoundation.
#include <utility>

#include "Base/Invariant.h"
#include "Tests/Fakes/FakeAVFoundation.h"
#include "Tests/Fakes/FakeAVFoundationShared.h"

namespace quillmere {
namespace {

class Track final : public AVAssetTrack {
public:
    explicit Track(FakeTrack fake) : track(std::move(fake)) {}

    AVMediaType mediaType() const override { return track.mediaType; }
    Size naturalSize() const override { return track.naturalSize; }
    AffineTransform preferredTransform() const override { return track.preferredTransform; }
    float estimatedDataRate() const override { return track.estimatedDataRate; }
    std::vector<CMFormatDescription> formatDescriptions() const override {
        return track.formatDescriptions;
    }

    const FakeTrack track;
};

class Asset final : public AVAsset {
public:
    explicit Asset(const FakeMovie* movie) : exists(movie != nullptr) {
        if (!movie) return;
        duration_ = movie->duration;
        still = movie->still;
        for (const FakeTrack& track : movie->tracks) {
            tracks_.push_back(std::make_shared<Track>(track));
        }
    }

    MediaTime duration() const override { return duration_; }
    std::vector<AVAssetTrackRef> tracksWithMediaType(AVMediaType mediaType) const override {
        std::vector<AVAssetTrackRef> found;
        for (const auto& track : tracks_) {
            if (track->mediaType() == mediaType) found.push_back(track);
        }
        return found;
    }
    bool owns(const AVAssetTrackRef& track) const {
        for (const auto& own : tracks_) {
            if (own == track) return true;
        }
        return false;
    }

    const bool exists;
    std::optional<CGImage> still;

private:
    MediaTime duration_ = MediaTime::zero();
    std::vector<AVAssetTrackRef> tracks_;
};

/// What a reader shares with its outputs.
struct Reading {
    std::mutex mutex;
    AVAssetReaderStatus status = AVAssetReaderStatus::unknown;
    std::optional<Error> error;
    std::size_t unfinished = 0;
};

class Output final : public AVAssetReaderTrackOutput {
public:
    Output(FakeAVFoundation& owner, std::shared_ptr<FakeAVFoundation::Shared> shared,
           AVAssetTrackRef track, bool wantsPictures)
        : owner_(owner),
          shared_(std::move(shared)),
          track_(std::static_pointer_cast<const Track>(track)),
          wantsPictures_(wantsPictures) {}

    void setAlwaysCopiesSampleData(bool copies) override {
        const std::lock_guard lock(shared_->mutex);
        shared_->copiesSampleData[track_->mediaType()] = copies;
    }

    CMSampleBufferRef copyNextSampleBuffer() override {
        if (owner_.beforeCopy) owner_.beforeCopy(track_->mediaType(), next_);
        if (!reading) return nullptr;
        const std::lock_guard lock(reading->mutex);
        if (reading->status != AVAssetReaderStatus::reading || ended_) return nullptr;
        const FakeTrack& track = track_->track;
        if (track.failsAfter && next_ == *track.failsAfter) {
            reading->status = AVAssetReaderStatus::failed;
            reading->error = FakeAVFoundation::failure(AVErrorCode::decodeFailed);
            return nullptr;
        }
        if (next_ < track.samples.size()) return track.samples[next_++];
        ended_ = true;
        if (--reading->unfinished == 0) reading->status = AVAssetReaderStatus::completed;
        return nullptr;
    }

    bool fits() const { return wantsPictures_ == (track_->mediaType() == AVMediaType::video); }
    AVMediaType mediaType() const { return track_->mediaType(); }
    AVAssetTrackRef track() const { return track_; }

    std::shared_ptr<Reading> reading;  // set when it is added

private:
    FakeAVFoundation& owner_;
    std::shared_ptr<FakeAVFoundation::Shared> shared_;
    std::shared_ptr<const Track> track_;
    bool wantsPictures_;
    std::size_t next_ = 0;
    bool ended_ = false;
};

class Reader final : public AVAssetReader {
public:
    Reader(FakeAVFoundation& owner, CallLog& log, std::shared_ptr<const Asset> asset)
        : owner_(owner), log_(log), asset_(std::move(asset)) {}

    bool canAddOutput(const AVAssetReaderTrackOutput& output) const override {
        const auto& own = static_cast<const Output&>(output);
        return !own.reading && own.fits() && asset_->owns(own.track()) &&
               !owner_.refusedOutputs.contains(own.mediaType()) &&
               status() == AVAssetReaderStatus::unknown;
    }
    void addOutput(const AVAssetReaderTrackOutputRef& output) override {
        if (!canAddOutput(*output)) invariantBroken();
        static_cast<Output&>(*output).reading = reading_;
        ++reading_->unfinished;
    }

    bool startReading() override {
        log_.record("startReading");
        const std::lock_guard lock(reading_->mutex);
        if (reading_->status != AVAssetReaderStatus::unknown) return false;
        reading_->error = owner_.startReadingError;
        reading_->status = reading_->error             ? AVAssetReaderStatus::failed
                           : reading_->unfinished == 0 ? AVAssetReaderStatus::completed
                                                       : AVAssetReaderStatus::reading;
        return !reading_->error;
    }
    void cancelReading() override {
        log_.record("cancelReading");
        const std::lock_guard lock(reading_->mutex);
        if (reading_->status == AVAssetReaderStatus::reading) {
            reading_->status = AVAssetReaderStatus::cancelled;
        }
    }

    AVAssetReaderStatus status() const override {
        const std::lock_guard lock(reading_->mutex);
        return reading_->status;
    }
    std::optional<Error> error() const override {
        const std::lock_guard lock(reading_->mutex);
        return reading_->error;
    }

private:
    FakeAVFoundation& owner_;
    CallLog& log_;
    std::shared_ptr<const Asset> asset_;
    std::shared_ptr<Reading> reading_ = std::make_shared<Reading>();
};

class ImageGenerator final : public AVAssetImageGenerator {
public:
    ImageGenerator(Dispatch& dispatch, std::shared_ptr<const Asset> asset)
        : dispatch_(dispatch), asset_(std::move(asset)) {}

    void setAppliesPreferredTrackTransform(bool) override {}

    void generateCGImagesAsynchronouslyForTimes(std::vector<MediaTime> times,
                                                CompletionHandler handler) override {
        dispatch_.globalQueue(QualityOfService::userInitiated)
            .async([asset = asset_, times = std::move(times), handler = std::move(handler)] {
                for (const MediaTime& time : times) {
                    if (asset->still) {
                        handler(time, *asset->still);
                    } else {
                        handler(time, FakeAVFoundation::failure(AVErrorCode::noImageAtTime));
                    }
                }
            });
    }

private:
    Dispatch& dispatch_;
    std::shared_ptr<const Asset> asset_;
};

}  // namespace

AVAssetRef FakeAVFoundation::assetWithURL(const std::filesystem::path& url) {
    const auto found = movies.find(url);
    return std::make_shared<Asset>(found == movies.end() ? nullptr : &found->second);
}

Result<std::shared_ptr<AVAssetReader>> FakeAVFoundation::assetReaderWithAsset(
    const AVAssetRef& asset) {
    if (readerError) return *readerError;
    auto own = std::static_pointer_cast<const Asset>(asset);
    if (!own->exists) return failure(AVErrorCode::fileFormatNotRecognized);
    return std::shared_ptr<AVAssetReader>(std::make_shared<Reader>(*this, log_, std::move(own)));
}

AVAssetReaderTrackOutputRef FakeAVFoundation::assetReaderTrackOutput(
    const AVAssetTrackRef& track, const AVReaderOutputSettings& outputSettings) {
    return std::make_shared<Output>(
        *this, shared_, track, std::holds_alternative<CVPixelBufferAttributes>(outputSettings));
}

std::unique_ptr<AVAssetImageGenerator> FakeAVFoundation::assetImageGeneratorWithAsset(
    const AVAssetRef& asset) {
    return std::make_unique<ImageGenerator>(dispatch_,
                                            std::static_pointer_cast<const Asset>(asset));
}

}  // namespace quillmere
