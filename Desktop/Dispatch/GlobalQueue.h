// One queue for everything that may run side by side.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>

#include "Desktop/Dispatch/Clock.h"
#include "Desktop/Dispatch/ThreadGroup.h"
#include "Platform/Dispatch/Dispatch.h"

namespace quillmere {

/// A pool that starts a thread whenever a block finds none idle, so that no block ever waits for
/// another that waits. Idle threads stay for later blocks.
class GlobalQueue final : public DispatchQueue {
public:
    GlobalQueue(Clock& clock, ThreadGroup& threads) : clock_(clock), threads_(threads) {}

    void async(Block block) override;
    void asyncAfter(std::chrono::nanoseconds delay, Block block) override;

    /// Lets the threads end once the blocks that are there, and those that they post, have run.
    void close();

private:
    void work();

    Clock& clock_;
    ThreadGroup& threads_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Block> waiting_;
    std::size_t idle_ = 0;
    bool closed_ = false;
};

}  // namespace quillmere
