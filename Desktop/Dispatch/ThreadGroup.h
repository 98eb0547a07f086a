// The threads behind the queues, so that their owner can wait for them all.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>

namespace quillmere {

/// Threads end by themselves; `waitForAll` returns when none is left. Must outlive its threads,
/// which `waitForAll` ensures.
class ThreadGroup {
public:
    void start(std::function<void()> body);
    void waitForAll();

private:
    std::mutex mutex_;
    std::condition_variable ended_;
    std::size_t running_ = 0;
};

}  // namespace quillmere
