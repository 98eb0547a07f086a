#include "Desktop/Dispatch/DesktopDispatch.h"

#include <condition_variable>
#include <mutex>
#include <semaphore>
#include <utility>
#include <vector>

#include "Desktop/Dispatch/SerialQueue.h"

namespace quillmere {
namespace {

class CountingGroup final : public DispatchGroup {
public:
    void enter() override {
        const std::lock_guard lock(mutex_);
        ++count_;
    }

    void leave() override {
        std::vector<Waiting> due;
        {
            const std::lock_guard lock(mutex_);
            if (count_ == 0 || --count_ > 0) return;
            due.swap(waiting_);
            empty_.notify_all();
        }
        for (Waiting& next : due) next.queue->async(std::move(next.block));
    }

    void notify(DispatchQueue& queue, Block block) override {
        {
            const std::lock_guard lock(mutex_);
            if (count_ > 0) {
                waiting_.push_back({&queue, std::move(block)});
                return;
            }
        }
        queue.async(std::move(block));
    }

    void wait() override {
        std::unique_lock lock(mutex_);
        empty_.wait(lock, [this] { return count_ == 0; });
    }

private:
    struct Waiting {
        DispatchQueue* queue;
        Block block;
    };

    std::mutex mutex_;
    std::condition_variable empty_;
    std::size_t count_ = 0;
    std::vector<Waiting> waiting_;
};

class CountingSemaphore final : public DispatchSemaphore {
public:
    explicit CountingSemaphore(int count) : semaphore_(count) {}
    void signal() override { semaphore_.release(); }
    void wait() override { semaphore_.acquire(); }

private:
    std::counting_semaphore<> semaphore_;
};

}  // namespace

DesktopDispatch::DesktopDispatch(std::unique_ptr<Clock> clock)
    : clock_(std::move(clock)), main_(*clock_), global_(*clock_, threads_) {}

DesktopDispatch::~DesktopDispatch() {
    clock_->stop();
    main_.close();
    global_.close();
    threads_.waitForAll();
}

DispatchQueue& DesktopDispatch::globalQueue(QualityOfService) { return global_; }

std::shared_ptr<DispatchQueue> DesktopDispatch::makeSerialQueue(std::string label,
                                                                QualityOfService) {
    return SerialQueue::make(std::move(label), *clock_, threads_);
}

std::shared_ptr<DispatchGroup> DesktopDispatch::makeGroup() {
    return std::make_shared<CountingGroup>();
}

std::shared_ptr<DispatchSemaphore> DesktopDispatch::makeSemaphore(int count) {
    return std::make_shared<CountingSemaphore>(count);
}

}  // namespace quillmere
