#include "Desktop/Dispatch/GlobalQueue.h"

#include <utility>

namespace quillmere {

void GlobalQueue::async(Block block) {
    bool startThread = false;
    {
        const std::lock_guard lock(mutex_);
        waiting_.push_back(std::move(block));
        startThread = waiting_.size() > idle_;
    }
    if (startThread) {
        threads_.start([this] { work(); });
    } else {
        changed_.notify_one();
    }
}

void GlobalQueue::asyncAfter(std::chrono::nanoseconds delay, Block block) {
    clock_.callAfter(delay,
                     [this, block = std::move(block)]() mutable { async(std::move(block)); });
}

void GlobalQueue::close() {
    {
        const std::lock_guard lock(mutex_);
        closed_ = true;
    }
    changed_.notify_all();
}

void GlobalQueue::work() {
    std::unique_lock lock(mutex_);
    for (;;) {
        ++idle_;
        changed_.wait(lock, [this] { return closed_ || !waiting_.empty(); });
        --idle_;
        if (waiting_.empty()) return;
        {
            const Block block = std::move(waiting_.front());
            waiting_.pop_front();
            lock.unlock();
            block();
        }
        lock.lock();
    }
}

}  // namespace quillmere
