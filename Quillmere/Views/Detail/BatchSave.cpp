#include "Quillmere/Views/Detail/BatchSave.h"

#include <utility>

#include "Base/Invariant.h"
#include "Quillmere/Models/Services/AssetRequest.h"
#include "Quillmere/Models/Services/PreferenceKeys.h"
#include "Quillmere/Views/Detail/DetailViewModel.h"

namespace quillmere {

struct BatchSave::Job {
    std::shared_ptr<DetailViewModel> model;
    std::shared_ptr<DispatchSemaphore> semaphore;
    OriginalMetadata kept;
    std::string name;
    std::size_t number;  // from 1
    bool isHeld = false;
};

BatchSave::BatchSave(const DetailPorts& ports, std::size_t pictureCount)
    : ports_(ports),
      pictureCount_(pictureCount),
      keepsDate_(ports.userDefaults.boolForKey(preserveCreationDateKey)),
      keepsLocation_(ports.userDefaults.boolForKey(preserveLocationKey)),
      group_(ports.dispatch.makeGroup()),
      saveQueue_(ports.dispatch.makeSerialQueue("saveQueue", QualityOfService::standard)),
      signalQueue_(
          ports.dispatch.makeSerialQueue("userInitiated_queue", QualityOfService::userInitiated)) {}

std::shared_ptr<BatchSave> BatchSave::start(const std::shared_ptr<DetailViewModel>& model,
                                            const DetailPorts& ports) {
    ports.application.setIdleTimerDisabled(true);
    model->isVideoProcessing.set(true);
    model->isConverting.set(true);

    const auto results = model->pickerResults.value_or(std::vector<PHPickerResult>());
    const std::shared_ptr<BatchSave> batch(new BatchSave(ports, results.size()));
    for (std::size_t i = 0; i < results.size(); ++i) {
        batch->group_->enter();  // the queued job itself, beside what it enters later
        batch->saveQueue_->async([batch, weak = std::weak_ptr(model), result = results[i], i] {
            batch->run(weak, result, i + 1);
            batch->group_->leave();
        });
    }
    batch->group_->notify(ports.dispatch.mainQueue(),
                          [batch, weak = std::weak_ptr(model)] { batch->finish(weak); });
    return batch;
}

void BatchSave::stop() {
    JobRef held;
    {
        const std::lock_guard lock(jobMutex_);
        isStopped_ = true;
        if (job_ && job_->isHeld) held = job_;
    }
    if (held) leaveAndSignal(held);
}

void BatchSave::abandon() {
    JobRef job;
    {
        const std::lock_guard lock(jobMutex_);
        isStopped_ = true;
        job = job_;
    }
    // It may leave and signal once more when it is done, which nobody waits for then.
    if (job) leaveAndSignal(job);
    if (!std::exchange(hasEnded_, true)) ports_.application.setIdleTimerDisabled(false);
}

void BatchSave::run(const std::weak_ptr<DetailViewModel>& weakModel, const PHPickerResult& result,
                    std::size_t number) {
    group_->enter();
    const auto job = std::make_shared<Job>();
    job->semaphore = ports_.dispatch.makeSemaphore(0);
    if (!begin(job)) {
        batchFailed_.store(true, std::memory_order_relaxed);
        return group_->leave();
    }
    job->model = weakModel.lock();
    if (!job->model) return;  // nobody waits for the end any more
    job->name = result.itemProvider->suggestedName().value_or(std::string());
    job->number = number;
    show(job, false);
    if (keepsDate_ || keepsLocation_) {
        job->kept = keptOf(metadataOf(ports_.photoLibrary, result), keepsDate_, keepsLocation_);
    }
    load(job, *result.itemProvider);
    job->semaphore->wait();
    const std::lock_guard lock(jobMutex_);
    job_.reset();
}

/// False once the batch is stopped.
bool BatchSave::begin(const JobRef& job) {
    const std::lock_guard lock(jobMutex_);
    if (!isStopped_) job_ = job;
    return !isStopped_;
}

void BatchSave::show(const JobRef& job, bool isHeld) {
    ports_.dispatch.mainQueue().async([self = shared_from_this(), job, isHeld] {
        if (self->hasEnded_) return;
        job->model->batchPicture.set(
            DetailViewModel::BatchPicture{job->name, job->number, self->pictureCount_, isHeld});
    });
}

/// Nothing more will come of the picture, and the others wait for it.
void BatchSave::hold(const JobRef& job) {
    batchFailed_.store(true, std::memory_order_relaxed);
    bool isStopped = false;
    {
        const std::lock_guard lock(jobMutex_);
        if (job_ != job) return;  // a tile had failed, which has ended its turn
        job->isHeld = true;
        isStopped = isStopped_;
    }
    isStopped ? leaveAndSignal(job) : show(job, true);
}

void BatchSave::load(const JobRef& job, NSItemProvider& provider) {
    if (provider.hasItemConformingToTypeIdentifier(UTTypeWebP)) {
        provider.loadDataRepresentationForTypeIdentifier(
            UTTypeWebP,
            [self = shared_from_this(), job](const Result<std::vector<std::byte>>& data) {
                const auto picture =
                    data ? self->ports_.imageIO.imageWithData(*data) : data.error();
                picture ? self->convert(job, *picture) : self->hold(job);
            });
    } else if (provider.canLoadObjectOfClassUIImage()) {
        provider.loadObjectOfClassUIImage(
            [self = shared_from_this(), job](const Result<UIImage>& image) {
                self->convert(job, image ? std::optional(*image) : std::nullopt);
            });
    } else {
        hold(job);
    }
}

void BatchSave::convert(const JobRef& job, const std::optional<UIImage>& picture) {
    if (!picture) {
        batchFailed_.store(true, std::memory_order_relaxed);
        return leaveAndSignal(job);
    }
    const EnhanceStyle style = job->model->selectedStyle.get();
    ports_.dispatch.globalQueue(QualityOfService::userInitiated)
        .async([self = shared_from_this(), job, style, source = upright(*picture)] {
            self->ports_.enhanceImage(
                style, source, {},
                [self, job](std::optional<UIImage> made, std::optional<std::string> text) {
                    if (made) {
                        self->save(job, *made);
                    } else if (text) {
                        self->failed(job, *text);
                    } else {
                        self->hold(job);
                    }
                });
        });
}

UIImage BatchSave::upright(const UIImage& picture) const {
    if (picture.imageOrientation() == UIImageOrientation::up) return picture;
    const Size size = picture.size();
    const auto canvas = ports_.graphics.beginImageContextWithOptions(size, false, picture.scale());
    canvas->drawInRect(picture, {0, 0, size.width, size.height});
    const auto drawn = canvas->imageFromCurrentContext();
    if (!drawn) invariantBroken();
    return *drawn;
}

void BatchSave::save(const JobRef& job, const UIImage& picture) {
    const auto format = UserDefaultsHelper::imageFormat(ports_.userDefaults);
    ports_.photoLibrary.performChanges(
        [ports = ports_, format, picture, kept = job->kept](PHChanges& changes) {
            makeAssetRequest(changes, ports.imageIO, ports.metadata, format, picture,
                             kept.creationDate, kept.location);
        },
        [self = shared_from_this(), job](bool, const std::optional<Error>& error) {
            self->saved(job, error);
        });
}

void BatchSave::failed(const JobRef& job, const std::string& text) {
    job->model->videoProgress.set(countOneMore());
    ports_.dispatch.mainQueue().async([self = shared_from_this(), job, text] {
        job->model->showError(text);
        self->batchFailed_.store(true, std::memory_order_relaxed);
        self->group_->leave();
        job->semaphore->signal();
    });
}

void BatchSave::saved(const JobRef& job, const std::optional<Error>& error) {
    ports_.dispatch.mainQueue().async(
        [job, progress = countOneMore()] { job->model->videoProgress.set(progress); });
    if (error) {
        batchFailed_.store(true, std::memory_order_relaxed);
        ports_.dispatch.mainQueue().async(
            [job, message = saveFailureMessage(error, ports_.localization)] {
                job->model->showError(message);
            });
    }
    leaveAndSignal(job);
}

float BatchSave::countOneMore() {
    const std::size_t count = completedCount_.load(std::memory_order_relaxed) + 1;
    completedCount_.store(count, std::memory_order_relaxed);
    return static_cast<float>(count) / static_cast<float>(pictureCount_);
}

void BatchSave::leaveAndSignal(const JobRef& job) {
    group_->leave();
    signalQueue_->async([job] { job->semaphore->signal(); });
}

void BatchSave::finish(const std::weak_ptr<DetailViewModel>& weakModel) {
    if (std::exchange(hasEnded_, true)) return;
    ports_.application.setIdleTimerDisabled(false);
    const auto model = weakModel.lock();
    if (!model) return;
    model->isConverting.set(false);
    model->isVideoProcessing.set(false);
    model->videoProgress.set(-1.0F);
    model->batchPicture.set(std::nullopt);
    if (batchFailed_.load(std::memory_order_relaxed)) return;
    model->alert.set(AlertTypes::defaultButton(
        ports_.localization.localizedString("CompletedToSave"), std::string()));
}

}  // namespace quillmere
