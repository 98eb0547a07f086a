// The writing half of FakeAVFoundation.
#include <cmath>
#include <sstream>
#include <utility>

#include "Base/Invariant.h"
#include "Tests/Fakes/FakeAVFoundation.h"
#include "Tests/Fakes/FakeAVFoundationShared.h"

namespace quillmere {
namespace {

class Input;

/// What a writer shares with its inputs; lives as long as the last of them.
struct Writing {
    mutable std::mutex mutex;
    AVAssetWriterStatus status = AVAssetWriterStatus::unknown;
    std::optional<Error> error;
    bool hasSession = false;
    std::optional<std::size_t> appendsUntilFailure;
    std::vector<std::weak_ptr<Input>> inputs;

    void wakeAll();
    /// Only a writer that is writing ends.
    void end(AVAssetWriterStatus how, std::optional<Error> why);
};

class Input final : public AVAssetWriterInput, public std::enable_shared_from_this<Input> {
public:
    Input(std::shared_ptr<FakeAVFoundation::Shared> shared, AVWriterOutputSettings settings,
          std::optional<std::size_t> room)
        : shared_(std::move(shared)), room_(room), left_(room) {
        track.settings = std::move(settings);
    }

    AVMediaType mediaType() const {
        return std::holds_alternative<AVVideoOutputSettings>(track.settings) ? AVMediaType::video
                                                                             : AVMediaType::audio;
    }
    void setExpectsMediaDataInRealTime(bool) override {}
    void setTransform(const AffineTransform& transform) override { track.transform = transform; }

    bool isReadyForMoreMediaData() const override {
        if (!writing) return false;
        const std::lock_guard lock(writing->mutex);
        return isReady();
    }

    void markAsFinished() override {
        if (!writing) return;
        {
            const std::lock_guard lock(writing->mutex);
            finished_ = true;
        }
        dropBlock();
        writing->wakeAll();
    }

    bool appendSampleBuffer(const CMSampleBufferRef& sample) override {
        const bool fits = mediaType() == AVMediaType::video ? sample->imageBuffer() != nullptr
                                                            : sample->audioData() != nullptr;
        bool appended = false;
        if (!writing) return false;
        {
            const std::lock_guard lock(writing->mutex);
            if (writing->status != AVAssetWriterStatus::writing || finished_) return false;
            if (!writing->hasSession) invariantBroken();
            const bool late =
                mediaType() == AVMediaType::video && !track.samples.empty() &&
                !(sample->presentationTimeStamp() > track.samples.back()->presentationTimeStamp());
            std::optional<std::size_t>& left = writing->appendsUntilFailure;
            if (!fits || late || (left && *left == 0)) {
                writing->status = AVAssetWriterStatus::failed;
                writing->error = FakeAVFoundation::failure(
                    !fits || late ? AVErrorCode::invalidSample : AVErrorCode::unknown);
            } else {
                if (left) --*left;
                if (left_ && *left_ > 0) --*left_;
                track.samples.push_back(sample);
                changed_ = true;
                appended = true;
                postIfDue();
            }
        }
        if (!appended) writing->wakeAll();
        return appended;
    }

    void requestMediaDataWhenReadyOnQueue(std::shared_ptr<DispatchQueue> queue,
                                          Block block) override {
        {
            const std::lock_guard lock(writing->mutex);
            queue_ = std::move(queue);
            block_ = std::move(block);
        }
        wake();
    }

    /// Runs the block if there is room and it isn't running; otherwise once it has returned.
    void wake() {
        if (!writing) return;
        const std::lock_guard lock(writing->mutex);
        changed_ = true;
        postIfDue();
    }

    /// The block may hold what holds this.
    void dropBlock() {
        Block block;
        const std::lock_guard lock(writing->mutex);
        block.swap(block_);
    }

    FakeWrittenTrack track;
    std::shared_ptr<Writing> writing;  // set when it is added

private:
    // The mutex of `writing` is held by the caller of these two.
    bool isReady() const {
        if (finished_ || writing->status == AVAssetWriterStatus::unknown) return false;
        if (writing->status != AVAssetWriterStatus::writing) return true;
        const std::lock_guard lock(shared_->mutex);
        return !shared_->held.contains(mediaType()) && !(left_ && *left_ == 0);
    }
    void postIfDue() {
        if (!block_ || posted_ || !changed_ || !isReady()) return;
        posted_ = true;
        changed_ = false;
        queue_->async([self = shared_from_this(), block = block_] {
            block();
            const std::lock_guard lock(self->writing->mutex);
            self->posted_ = false;
            if (self->left_ && *self->left_ != *self->room_) self->changed_ = true;
            self->left_ = self->room_;
            self->postIfDue();
        });
    }

    std::shared_ptr<FakeAVFoundation::Shared> shared_;
    const std::optional<std::size_t> room_;
    std::optional<std::size_t> left_;
    bool finished_ = false;
    bool posted_ = false;
    bool changed_ = false;
    std::shared_ptr<DispatchQueue> queue_;
    Block block_;
};

void Writing::wakeAll() {
    std::vector<std::weak_ptr<Input>> all;
    {
        const std::lock_guard lock(mutex);
        all = inputs;
    }
    for (const auto& weak : all) {
        if (const auto input = weak.lock()) input->wake();
    }
}

void Writing::end(AVAssetWriterStatus how, std::optional<Error> why) {
    {
        const std::lock_guard lock(mutex);
        if (status != AVAssetWriterStatus::writing) return;
        status = how;
        error = std::move(why);
    }
    wakeAll();
}

class Pool final : public CVPixelBufferPool {
public:
    Pool(PixelSize size, CVPixelFormat format, bool isEmpty)
        : size_(size), format_(format), isEmpty_(isEmpty) {}

    std::shared_ptr<CVPixelBuffer> createPixelBuffer() override {
        return isEmpty_ ? nullptr : std::make_shared<CVPixelBuffer>(size_, format_);
    }

private:
    PixelSize size_;
    CVPixelFormat format_;
    bool isEmpty_;
};

class Adaptor final : public AVAssetWriterInputPixelBufferAdaptor {
public:
    Adaptor(FakeAVFoundation& owner, std::shared_ptr<Input> input, CVPixelFormat format)
        : owner_(owner), input_(std::move(input)), format_(format) {}

    std::shared_ptr<CVPixelBufferPool> pixelBufferPool() override {
        const auto* settings = std::get_if<AVVideoOutputSettings>(&input_->track.settings);
        if (!settings || !input_->writing || owner_.poolIsMissing) return nullptr;
        const std::lock_guard lock(input_->writing->mutex);
        if (input_->writing->status != AVAssetWriterStatus::writing) return nullptr;
        const PixelSize size{static_cast<int>(std::floor(settings->width + 0.5)),
                             static_cast<int>(std::floor(settings->height + 0.5))};
        return std::make_shared<Pool>(size, format_, owner_.poolIsEmpty);
    }

    bool appendPixelBuffer(const CVPixelBufferRef& buffer, MediaTime time) override {
        return input_->appendSampleBuffer(
            std::make_shared<CMSampleBuffer>(time, MediaTime{}, buffer));
    }

private:
    FakeAVFoundation& owner_;
    std::shared_ptr<Input> input_;
    CVPixelFormat format_;
};

class Writer final : public AVAssetWriter {
public:
    Writer(FakeAVFoundation& owner, std::shared_ptr<FakeAVFoundation::Shared> shared, CallLog& log,
           Dispatch& dispatch, std::filesystem::path url)
        : owner_(owner),
          shared_(std::move(shared)),
          log_(log),
          dispatch_(dispatch),
          url_(std::move(url)) {
        writing_->appendsUntilFailure = owner.appendsUntilFailure;
    }
    ~Writer() override {
        writing_->end(AVAssetWriterStatus::cancelled, {});
        for (const auto& input : inputs_) input->dropBlock();
    }

    bool canAddInput(const AVAssetWriterInput& input) const override {
        const auto& own = static_cast<const Input&>(input);
        for (const auto& other : inputs_) {
            if (other->mediaType() == own.mediaType()) return false;
        }
        return !own.writing && !owner_.refusedInputs.contains(own.mediaType()) &&
               status() == AVAssetWriterStatus::unknown;
    }
    void addInput(const AVAssetWriterInputRef& input) override {
        if (!canAddInput(*input)) invariantBroken();
        auto own = std::static_pointer_cast<Input>(input);
        log_.record(own->mediaType() == AVMediaType::video ? "addInput video" : "addInput audio");
        own->writing = writing_;
        inputs_.push_back(own);
        writing_->inputs.push_back(own);
        const std::lock_guard lock(shared_->mutex);
        shared_->inputsChanged.push_back([weak = std::weak_ptr(own)] {
            if (const auto alive = weak.lock()) alive->wake();
        });
    }

    bool startWriting() override {
        log_.record("startWriting");
        {
            const std::lock_guard lock(writing_->mutex);
            if (writing_->status != AVAssetWriterStatus::unknown) return false;
            writing_->error = owner_.startWritingError;
            writing_->status =
                writing_->error ? AVAssetWriterStatus::failed : AVAssetWriterStatus::writing;
        }
        writing_->wakeAll();
        return status() == AVAssetWriterStatus::writing;
    }
    void startSessionAtSourceTime(MediaTime time) override {
        std::ostringstream line;
        line << "startSession " << time.seconds();
        log_.record(line.str());
        const std::lock_guard lock(writing_->mutex);
        writing_->hasSession = true;
    }
    void cancelWriting() override {
        log_.record("cancelWriting");
        writing_->end(AVAssetWriterStatus::cancelled, {});
    }

    void finishWritingWithCompletionHandler(std::function<void()> handler) override {
        log_.record("finishWriting");
        for (const auto& input : inputs_) input->markAsFinished();
        FakeWrittenMovie movie;
        for (const auto& input : inputs_) {
            if (!input->track.samples.empty()) movie.emplace(input->mediaType(), input->track);
        }
        std::optional<Error> error = owner_.finishError;
        if (!error && movie.empty()) error = owner_.failure(AVErrorCode::noDataCaptured);
        dispatch_.globalQueue(QualityOfService::userInitiated)
            .async([writing = writing_, shared = shared_, url = url_, movie = std::move(movie),
                    error, handler = std::move(handler)] {
                if (!error) {
                    const std::scoped_lock lock(writing->mutex, shared->mutex);
                    if (writing->status == AVAssetWriterStatus::writing) {
                        shared->written[url] = movie;
                    }
                }
                writing->end(error ? AVAssetWriterStatus::failed : AVAssetWriterStatus::completed,
                             error);
                handler();
            });
    }

    AVAssetWriterStatus status() const override {
        const std::lock_guard lock(writing_->mutex);
        return writing_->status;
    }
    std::optional<Error> error() const override {
        const std::lock_guard lock(writing_->mutex);
        return writing_->error;
    }

private:
    FakeAVFoundation& owner_;
    std::shared_ptr<FakeAVFoundation::Shared> shared_;
    CallLog& log_;
    Dispatch& dispatch_;
    std::filesystem::path url_;
    std::shared_ptr<Writing> writing_ = std::make_shared<Writing>();
    std::vector<std::shared_ptr<Input>> inputs_;
};

}  // namespace

FakeAVFoundation::FakeAVFoundation(CallLog& log, Dispatch& dispatch)
    : shared_(std::make_shared<Shared>()), log_(log), dispatch_(dispatch) {}
FakeAVFoundation::~FakeAVFoundation() = default;

void FakeAVFoundation::hold(AVMediaType mediaType) {
    const std::lock_guard lock(shared_->mutex);
    shared_->held.insert(mediaType);
}

void FakeAVFoundation::letGo(AVMediaType mediaType) {
    std::vector<std::function<void()>> inputsChanged;
    {
        const std::lock_guard lock(shared_->mutex);
        shared_->held.erase(mediaType);
        inputsChanged = shared_->inputsChanged;
    }
    for (const auto& changed : inputsChanged) changed();
}

std::map<std::filesystem::path, FakeWrittenMovie> FakeAVFoundation::written() const {
    const std::lock_guard lock(shared_->mutex);
    return shared_->written;
}

std::map<AVMediaType, bool> FakeAVFoundation::copiesSampleData() const {
    const std::lock_guard lock(shared_->mutex);
    return shared_->copiesSampleData;
}

Result<std::shared_ptr<AVAssetWriter>> FakeAVFoundation::assetWriterWithURL(
    const std::filesystem::path& url, AVFileType) {
    if (writerError) return *writerError;
    return std::shared_ptr<AVAssetWriter>(
        std::make_shared<Writer>(*this, shared_, log_, dispatch_, url));
}

AVAssetWriterInputRef FakeAVFoundation::assetWriterInput(
    const AVWriterOutputSettings& outputSettings) {
    return std::make_shared<Input>(shared_, outputSettings, room);
}

std::shared_ptr<AVAssetWriterInputPixelBufferAdaptor> FakeAVFoundation::pixelBufferAdaptor(
    const AVAssetWriterInputRef& input, const CVPixelBufferAttributes& attributes) {
    return std::make_shared<Adaptor>(*this, std::static_pointer_cast<Input>(input),
                                     attributes.pixelFormatType);
}

}  // namespace quillmere
