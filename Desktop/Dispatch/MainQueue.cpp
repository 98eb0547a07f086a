#include "Desktop/Dispatch/MainQueue.h"

#include <utility>

namespace quillmere {

void MainQueue::async(Block block) {
    {
        const std::lock_guard lock(mutex_);
        if (closed_) return;
        blocks_.push_back(std::move(block));
    }
    changed_.notify_all();
    if (posted_) posted_();
}

void MainQueue::asyncAfter(std::chrono::nanoseconds delay, Block block) {
    clock_.callAfter(delay,
                     [this, block = std::move(block)]() mutable { async(std::move(block)); });
}

bool MainQueue::runOne(std::unique_lock<std::mutex>& lock) {
    if (blocks_.empty()) return false;
    {
        const Block block = std::move(blocks_.front());
        blocks_.pop_front();
        lock.unlock();
        block();
    }
    lock.lock();
    return true;
}

void MainQueue::runUntil(const std::function<bool()>& done) {
    std::unique_lock lock(mutex_);
    for (;;) {
        const unsigned long seen = wakes_;
        lock.unlock();
        const bool ended = done();
        lock.lock();
        if (ended) return;
        if (!runOne(lock)) {
            changed_.wait(lock, [&] { return !blocks_.empty() || wakes_ != seen; });
        }
    }
}

void MainQueue::runPending() {
    std::unique_lock lock(mutex_);
    while (runOne(lock)) {
    }
}

void MainQueue::wake() {
    {
        const std::lock_guard lock(mutex_);
        ++wakes_;
    }
    changed_.notify_all();
}

void MainQueue::close() {
    std::deque<Block> dropped;  // goes after the lock, for what goes with it may post
    {
        const std::lock_guard lock(mutex_);
        closed_ = true;
        dropped.swap(blocks_);
    }
}

}  // namespace quillmere
