#include "Desktop/AVFoundation/MovieWriter.h"

#include <algorithm>
#include <utility>

#include "Base/Invariant.h"
#include "Desktop/AVFoundation/AudioEncoder.h"
#include "Desktop/AVFoundation/VideoEncoder.h"

namespace quillmere {

AVMediaType MovieWriterInput::mediaType() const {
    return std::holds_alternative<AVVideoOutputSettings>(settings_) ? AVMediaType::video
                                                                    : AVMediaType::audio;
}

std::optional<PixelSize> MovieWriterInput::frameSize() const {
    const auto* video = std::get_if<AVVideoOutputSettings>(&settings_);
    return video ? VideoEncoder::frameSize(*video) : std::nullopt;
}

bool MovieWriterInput::canBeEncoded() const {
    const auto* sound = std::get_if<AVAudioOutputSettings>(&settings_);
    return sound ? AudioEncoder::canEncode(*sound) : frameSize().has_value();
}

void MovieWriterInput::attach(std::shared_ptr<WritingState> writing) {
    writing_ = std::move(writing);
    track_ = writing_->addTrack(
        mediaType(),
        [this](MovieMuxer& muxer, const MediaTime& sessionStart) -> std::unique_ptr<SampleEncoder> {
            if (const auto* sound = std::get_if<AVAudioOutputSettings>(&settings_)) {
                return std::make_unique<AudioEncoder>(*sound, sessionStart, muxer);
            }
            return std::make_unique<VideoEncoder>(std::get<AVVideoOutputSettings>(settings_),
                                                  transform_, sessionStart, muxer);
        });
}

bool MovieWriterInput::isReadyForMoreMediaData() const {
    return writing_ && writing_->isReady(track_);
}

void MovieWriterInput::markAsFinished() {
    if (writing_) writing_->markAsFinished(track_);
}

bool MovieWriterInput::appendSampleBuffer(const CMSampleBufferRef& sample) {
    return writing_ && writing_->append(track_, sample);
}

void MovieWriterInput::requestMediaDataWhenReadyOnQueue(std::shared_ptr<DispatchQueue> queue,
                                                        Block block) {
    if (!writing_) invariantBroken();
    writing_->request(track_, std::move(queue), std::move(block));
}

MoviePixelBufferAdaptor::MoviePixelBufferAdaptor(std::shared_ptr<MovieWriterInput> input,
                                                 const CVPixelBufferAttributes& attributes)
    : input_(std::move(input)) {
    if (const auto size = input_->frameSize()) {
        pool_ = std::make_shared<PixelBufferPool>(*size, attributes.pixelFormatType);
    }
}

std::shared_ptr<CVPixelBufferPool> MoviePixelBufferAdaptor::pixelBufferPool() {
    const auto& writing = input_->writing();
    const bool isWriting = writing && writing->status() == AVAssetWriterStatus::writing;
    return isWriting ? pool_ : nullptr;
}

bool MoviePixelBufferAdaptor::appendPixelBuffer(const CVPixelBufferRef& buffer,
                                                MediaTime presentationTime) {
    return input_->appendSampleBuffer(
        std::make_shared<const CMSampleBuffer>(presentationTime, MediaTime{}, buffer));
}

MovieWriter::MovieWriter(std::filesystem::path path, Dispatch& dispatch)
    : writing_(std::make_shared<WritingState>(std::move(path), dispatch)) {}

bool MovieWriter::canAddInput(const AVAssetWriterInput& input) const {
    const auto& own = static_cast<const MovieWriterInput&>(input);
    const bool hasOne = std::any_of(inputs_.begin(), inputs_.end(), [&](const auto& other) {
        return other->mediaType() == own.mediaType();
    });
    return !hasOne && !own.writing() && own.canBeEncoded() &&
           status() == AVAssetWriterStatus::unknown;
}

void MovieWriter::addInput(const AVAssetWriterInputRef& input) {
    if (!canAddInput(*input)) invariantBroken();
    auto own = std::static_pointer_cast<MovieWriterInput>(input);
    own->attach(writing_);
    inputs_.push_back(std::move(own));
}

}  // namespace quillmere
