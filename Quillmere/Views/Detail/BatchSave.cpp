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

void BatchSave::start(const std::shared_ptr<DetailViewModel>& model, const DetailPorts& ports) {
    ports.application.setIdleTimerDisabled(true);
    model->isVideoProcessing.set(true);
    model->isConverting.set(true);

    const auto results = model->pickerResults.value_or(std::vector<PHPickerResult>());
    const std::shared_ptr<BatchSave> batch(new BatchSave(ports, results.size()));
    for (const PHPickerResult& result : results) {
        batch->group_->enter();  // the queued job itself, beside what it enters later
        batch->saveQueue_->async([batch, weak = std::weak_ptr(model), result] {
            batch->run(weak, result);
            batch->group_->leave();
        });
    }
    batch->group_->notify(ports.dispatch.mainQueue(),
                          [batch, weak = std::weak_ptr(model)] { batch->finish(weak); });
}

void BatchSave::run(const std::weak_ptr<DetailViewModel>& weakModel, const PHPickerResult& result) {
    group_->enter();
    const auto model = weakModel.lock();
    if (!model) return;  // nobody waits for the end any more

    const auto job = std::make_shared<Job>();
    job->model = model;
    job->semaphore = ports_.dispatch.makeSemaphore(0);
    if (keepsDate_ || keepsLocation_) {
        job->kept = keptOf(metadataOf(ports_.photoLibrary, result), keepsDate_, keepsLocation_);
    }
    load(job, *result.itemProvider);
    job->semaphore->wait();
}

void BatchSave::load(const JobRef& job, NSItemProvider& provider) {
    if (provider.hasItemConformingToTypeIdentifier(UTTypeWebP)) {
        provider.loadDataRepresentationForTypeIdentifier(
            UTTypeWebP,
            [self = shared_from_this(), job](const Result<std::vector<std::byte>>& data) {
                if (!data) return;
                const auto picture = self->ports_.imageIO.imageWithData(*data);
                if (picture) self->convert(job, *picture);
            });
    } else if (provider.canLoadObjectOfClassUIImage()) {
        provider.loadObjectOfClassUIImage(
            [self = shared_from_this(), job](const Result<UIImage>& image) {
                self->convert(job, image ? std::optional(*image) : std::nullopt);
            });
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
    ports_.application.setIdleTimerDisabled(false);
    const auto model = weakModel.lock();
    if (!model) return;
    model->isConverting.set(false);
    model->isVideoProcessing.set(false);
    model->videoProgress.set(-1.0F);
    if (batchFailed_.load(std::memory_order_relaxed)) return;
    model->alert.set(AlertTypes::defaultButton(
        ports_.localization.localizedString("CompletedToSave"), std::string()));
}

}  // namespace quillmere
