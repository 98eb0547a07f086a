#include "Desktop/AVFoundation/MovieReader.h"

#include <cmath>
#include <new>
#include <utility>

#include "Base/Invariant.h"
#include "Desktop/AVFoundation/AudioSource.h"
#include "Desktop/AVFoundation/MovieError.h"
#include "Desktop/AVFoundation/VideoSource.h"

namespace quillmere {

AVAssetReaderStatus ReadingState::status() const {
    const std::lock_guard lock(mutex_);
    return status_;
}

std::optional<Error> ReadingState::error() const {
    const std::lock_guard lock(mutex_);
    return error_;
}

bool ReadingState::addOutput() {
    const std::lock_guard lock(mutex_);
    if (status_ != AVAssetReaderStatus::unknown) return false;
    ++unfinished_;
    return true;
}

bool ReadingState::start() {
    const std::lock_guard lock(mutex_);
    if (status_ != AVAssetReaderStatus::unknown) return false;
    status_ = unfinished_ == 0 ? AVAssetReaderStatus::completed : AVAssetReaderStatus::reading;
    return true;
}

void ReadingState::outputEnded() {
    const std::lock_guard lock(mutex_);
    if (--unfinished_ == 0 && status_ == AVAssetReaderStatus::reading) {
        status_ = AVAssetReaderStatus::completed;
    }
}

void ReadingState::fail(Error error) {
    const std::lock_guard lock(mutex_);
    if (status_ != AVAssetReaderStatus::reading) return;
    status_ = AVAssetReaderStatus::failed;
    error_ = std::move(error);
}

void ReadingState::cancel() {
    const std::lock_guard lock(mutex_);
    if (status_ != AVAssetReaderStatus::reading) return;
    status_ = AVAssetReaderStatus::cancelled;
    cancelled->store(true, std::memory_order_relaxed);
}

MovieTrackOutput::MovieTrackOutput(std::shared_ptr<const MovieTrack> track,
                                   AVReaderOutputSettings settings)
    : track_(std::move(track)), settings_(std::move(settings)) {}

bool MovieTrackOutput::fits() const {
    if (const auto* sound = std::get_if<AVAudioReaderSettings>(&settings_)) {
        constexpr double highestRate = 768'000;
        return track_->mediaType() == AVMediaType::audio &&
               sound->formatID == AudioFormatID::linearPCM && sound->sampleRate >= 1 &&
               sound->sampleRate <= highestRate;
    }
    return track_->mediaType() == AVMediaType::video &&
           std::get<CVPixelBufferAttributes>(settings_).pixelFormatType != CVPixelFormat::rgba8;
}

Result<void> MovieTrackOutput::open() {
    auto decoder = TrackDecoder::open(track_->path(), track_->stream(), reading_->cancelled);
    if (!decoder) return decoder.error();
    if (const auto* sound = std::get_if<AVAudioReaderSettings>(&settings_)) {
        source_ = std::make_unique<AudioSource>(*std::move(decoder),
                                                static_cast<int>(std::lround(sound->sampleRate)));
    } else {
        const auto& pictures = std::get<CVPixelBufferAttributes>(settings_);
        source_ = std::make_unique<VideoSource>(*std::move(decoder), track_->size(),
                                                pictures.pixelFormatType);
    }
    return {};
}

CMSampleBufferRef MovieTrackOutput::copyNextSampleBuffer() {
    if (!source_ || reading_->status() != AVAssetReaderStatus::reading) return nullptr;
    try {
        Result<CMSampleBufferRef> sample = source_->next();
        if (sample && *sample) {
            return reading_->status() == AVAssetReaderStatus::reading ? *sample : nullptr;
        }
        source_.reset();
        if (sample) {
            reading_->outputEnded();
        } else {
            reading_->fail(sample.error());
        }
    } catch (const std::bad_alloc&) {
        source_.reset();
        reading_->fail(movieOutOfMemory());
    }
    return nullptr;
}

bool MovieReader::canAddOutput(const AVAssetReaderTrackOutput& output) const {
    const auto& own = static_cast<const MovieTrackOutput&>(output);
    return !own.isAdded() && own.fits() && asset_->owns(own.track()) &&
           own.track().canBeDecoded() && status() == AVAssetReaderStatus::unknown;
}

void MovieReader::addOutput(const AVAssetReaderTrackOutputRef& output) {
    if (!canAddOutput(*output) || !reading_->addOutput()) invariantBroken();
    auto own = std::static_pointer_cast<MovieTrackOutput>(output);
    own->attach(reading_);
    outputs_.push_back(std::move(own));
}

bool MovieReader::startReading() {
    if (!reading_->start()) return false;
    for (const auto& output : outputs_) {
        if (const auto opened = output->open(); !opened) {
            reading_->fail(opened.error());
            return false;
        }
    }
    return true;
}

}  // namespace quillmere
