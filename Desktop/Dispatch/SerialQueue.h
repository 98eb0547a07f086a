// A queue with a thread of its own.
#pragma once

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <string>

#include "Desktop/Dispatch/Clock.h"
#include "Desktop/Dispatch/ThreadGroup.h"
#include "Platform/Dispatch/Dispatch.h"

namespace quillmere {

/// The thread shares the list of blocks, not the queue: whoever drops the queue last, on whatever
/// thread, only closes the list, and the thread ends when it has run what is left.
class SerialQueue final : public DispatchQueue, public std::enable_shared_from_this<SerialQueue> {
public:
    /// `label` names the thread (its first 15 bytes, as the system allows).
    static std::shared_ptr<SerialQueue> make(std::string label, Clock& clock, ThreadGroup& threads);
    ~SerialQueue() override;

    void async(Block block) override;
    /// Holds the queue until the block is due.
    void asyncAfter(std::chrono::nanoseconds delay, Block block) override;

private:
    struct Blocks {
        std::mutex mutex;
        std::condition_variable changed;
        std::deque<Block> waiting;
        bool closed = false;

        void runAll();
    };

    explicit SerialQueue(Clock& clock) : clock_(clock), blocks_(std::make_shared<Blocks>()) {}

    Clock& clock_;
    std::shared_ptr<Blocks> blocks_;
};

}  // namespace quillmere
