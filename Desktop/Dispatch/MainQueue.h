// The queue of the thread that the screens, or the command line, live on.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

#include "Desktop/Dispatch/Clock.h"
#include "Platform/Dispatch/Dispatch.h"

namespace quillmere {

/// Blocks wait until the owning thread pumps them; those left at the end never run.
class MainQueue final : public DispatchQueue {
public:
    explicit MainQueue(Clock& clock) : clock_(clock) {}

    void async(Block block) override;
    void asyncAfter(std::chrono::nanoseconds delay, Block block) override;

    /// Runs blocks in order until `done` answers true, waiting for more as long as it doesn't.
    /// `done` is asked before each block and after each `async`, on the calling thread; whatever
    /// else makes it true must post a block, or call `wake`.
    void runUntil(const std::function<bool()>& done);

    /// Runs the blocks that are there now, and those that they post, and returns.
    void runPending();

    void wake();

    /// For a thread that waits for other things as well: `posted` is called after each `async`, on
    /// its thread, and has to see to it that `runPending` is called soon. To be set once, before
    /// the queue is used.
    void whenPosted(std::function<void()> posted) { posted_ = std::move(posted); }

    /// Lets go of the blocks that are there, and of those to come, without running them: they may
    /// hold what others wait for.
    void close();

private:
    /// Takes the first block and runs it without the lock; false if there is none.
    bool runOne(std::unique_lock<std::mutex>& lock);

    Clock& clock_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Block> blocks_;
    unsigned long wakes_ = 0;
    bool closed_ = false;
    std::function<void()> posted_;
};

}  // namespace quillmere
