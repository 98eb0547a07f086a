// Queues and time: the only way in which the application's logic moves work between threads.
//
// Guarantees of every implementation
//   * A block runs exactly once. Blocks never run on the thread that posts them, before `async`
//     returns, except on the main queue, whose owner pumps it.
//   * What happened before the posting of a block is visible to it.
//   * A block must not throw.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace quillmere {

using Block = std::function<void()>;

/// How urgent a queue's work is. A platform may map it to thread priorities, or ignore it.
enum class QualityOfService { userInteractive, userInitiated, standard, utility, background };

/// Somewhere to post blocks to. All operations may be called from any thread.
class DispatchQueue {
public:
    virtual ~DispatchQueue() = default;

    /// Posts a block with no quality of service and no flags of its own; returns at once.
    virtual void async(Block block) = 0;

    /// Posts a block once `delay` has passed on the clock; 0 or less means now.
    /// A delayed block that is not due when its `Dispatch` ends never runs.
    virtual void asyncAfter(std::chrono::nanoseconds delay, Block block) = 0;
};

/// Counts work in flight. Leaving more often than entering stops at zero.
class DispatchGroup {
public:
    virtual ~DispatchGroup() = default;

    virtual void enter() = 0;
    virtual void leave() = 0;
    /// Posts `block` to `queue` once the count is zero, which may be now. Each block is posted
    /// once.
    virtual void notify(DispatchQueue& queue, Block block) = 0;
    /// Blocks the calling thread until the count is zero.
    virtual void wait() = 0;
};

/// A counting semaphore.
class DispatchSemaphore {
public:
    virtual ~DispatchSemaphore() = default;

    virtual void signal() = 0;
    /// Blocks the calling thread until the count is above zero, then takes one.
    virtual void wait() = 0;
};

class Dispatch {
public:
    virtual ~Dispatch() = default;

    /// First in first out, on the one thread that pumps it.
    virtual DispatchQueue& mainQueue() = 0;

    /// A pool that grows: a block that waits never keeps another from running.
    virtual DispatchQueue& globalQueue(QualityOfService quality) = 0;

    /// A thread of its own: first in first out, no two blocks at once. Its blocks run to the end
    /// even when the last reference goes first, which may happen on the queue itself.
    virtual std::shared_ptr<DispatchQueue> makeSerialQueue(std::string label,
                                                           QualityOfService quality) = 0;

    virtual std::shared_ptr<DispatchGroup> makeGroup() = 0;

    /// `count` is the number of `wait` calls that pass before the first `signal`; not negative.
    virtual std::shared_ptr<DispatchSemaphore> makeSemaphore(int count) = 0;

    /// Time since some fixed point; never goes back, and runs on while the machine is in use.
    virtual std::chrono::nanoseconds now() const = 0;
};

}  // namespace quillmere
