#include "Desktop/Dispatch/SerialQueue.h"

#include <pthread.h>

#include <utility>

namespace quillmere {

std::shared_ptr<SerialQueue> SerialQueue::make(std::string label, Clock& clock,
                                               ThreadGroup& threads) {
    const std::shared_ptr<SerialQueue> queue(new SerialQueue(clock));
    threads.start([blocks = queue->blocks_, name = label.substr(0, 15)] {
        pthread_setname_np(pthread_self(), name.c_str());
        blocks->runAll();
    });
    return queue;
}

SerialQueue::~SerialQueue() {
    {
        const std::lock_guard lock(blocks_->mutex);
        blocks_->closed = true;
    }
    blocks_->changed.notify_one();
}

void SerialQueue::async(Block block) {
    // The block may be what ends the queue's owner, and the queue with it, before this returns.
    const auto blocks = blocks_;
    {
        const std::lock_guard lock(blocks->mutex);
        blocks->waiting.push_back(std::move(block));
    }
    blocks->changed.notify_one();
}

void SerialQueue::asyncAfter(std::chrono::nanoseconds delay, Block block) {
    clock_.callAfter(delay, [self = shared_from_this(), block = std::move(block)]() mutable {
        self->async(std::move(block));
    });
}

void SerialQueue::Blocks::runAll() {
    std::unique_lock lock(mutex);
    for (;;) {
        changed.wait(lock, [this] { return closed || !waiting.empty(); });
        if (waiting.empty()) return;
        {
            const Block block = std::move(waiting.front());
            waiting.pop_front();
            lock.unlock();
            block();
        }
        lock.lock();
    }
}

}  // namespace quillmere
