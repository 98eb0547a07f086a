// Several picked pictures, converted and saved one after the other.
#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "Quillmere/Views/Detail/DetailPorts.h"
#include "Quillmere/Views/Detail/KeptMetadata.h"

namespace quillmere {

class DetailViewModel;

/// One batch. Lives as long as its jobs, which run on a serial queue, in the order of the picking:
/// each waits on a semaphore of its own until its picture is saved or has failed, so that there is
/// never more than one full-size picture. A picture that is being converted can't be cancelled. One
/// of which nothing more will come holds the batch until it is stopped.
class BatchSave : public std::enable_shared_from_this<BatchSave> {
public:
    /// All of the model's picker results by the style that is selected when each one's turn
    /// comes. Main thread; returns at once.
    static std::shared_ptr<BatchSave> start(const std::shared_ptr<DetailViewModel>& model,
                                            const DetailPorts& ports);

    /// Begins no other picture, and ends when the one in work is saved or has failed; at once where
    /// that one holds the batch. Main thread.
    void stop();

    /// Nobody waits for the end any more: stops, keeps the machine awake no longer, and waits for
    /// nothing. The picture in work is still saved. Main thread.
    void abandon();

private:
    struct Job;
    using JobRef = std::shared_ptr<Job>;

    BatchSave(const DetailPorts& ports, std::size_t pictureCount);

    void run(const std::weak_ptr<DetailViewModel>& weakModel, const PHPickerResult& result,
             std::size_t number);
    bool begin(const JobRef& job);
    void show(const JobRef& job, bool isHeld);
    void hold(const JobRef& job);
    void load(const JobRef& job, NSItemProvider& provider);
    void convert(const JobRef& job, const std::optional<UIImage>& picture);
    void save(const JobRef& job, const UIImage& picture);
    void failed(const JobRef& job, const std::string& text);
    void saved(const JobRef& job, const std::optional<Error>& error);
    void finish(const std::weak_ptr<DetailViewModel>& weakModel);

    UIImage upright(const UIImage& picture) const;
    float countOneMore();
    void leaveAndSignal(const JobRef& job);

    DetailPorts ports_;
    const std::size_t pictureCount_;
    const bool keepsDate_;
    const bool keepsLocation_;
    const std::shared_ptr<DispatchGroup> group_;
    const std::shared_ptr<DispatchQueue> saveQueue_;
    const std::shared_ptr<DispatchQueue> signalQueue_;
    // Reached from one queue after another; a run that reports several failures overlaps itself.
    std::atomic<std::size_t> completedCount_ = 0;
    std::atomic<bool> batchFailed_ = false;

    std::mutex jobMutex_;  // of the next two, and of `isHeld` of the job
    JobRef job_;           // whose turn it is
    bool isStopped_ = false;
    bool hasEnded_ = false;  // main thread
};

}  // namespace quillmere
