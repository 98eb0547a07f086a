// Ending the program when the user or the system asks for it.
#pragma once

#include <functional>
#include <mutex>
#include <utility>

namespace quillmere::cli {

/// What a process that was interrupted ends with.
inline constexpr int interruptedExitCode = 130;

/// Catches SIGINT, SIGTERM and SIGHUP on a thread of its own, and ends the process with exit code
/// 130: at once while a network runs, after the end of a file that is being written. A second
/// signal doesn't wait for that file either.
///
/// To be made once, before any other thread, so that no other thread takes the signals.
class Interruption {
public:
    Interruption();

    /// While `cancel` is set, the first signal calls it, on the object's own thread, and does no
    /// more: the work is to end by itself, and the process after it. Null for the usual end. Once
    /// this returns, an earlier one is not called any more.
    void cancelBy(std::function<void()> cancel) {
        const std::lock_guard lock(beforeEndMutex_);
        cancel_ = std::move(cancel);
    }

    /// While it is held, the first signal waits.
    [[nodiscard]] std::unique_lock<std::mutex> whileWriting() { return std::unique_lock(writing_); }

    /// What the first signal does last, on the object's own thread; null for nothing. Once this
    /// returns, no earlier one runs any more.
    void beforeEnd(std::function<void()> work) {
        const std::lock_guard lock(beforeEndMutex_);
        beforeEnd_ = std::move(work);
    }

private:
    std::mutex writing_;
    std::mutex beforeEndMutex_;
    std::function<void()> beforeEnd_;
    std::function<void()> cancel_;
};

}  // namespace quillmere::cli
