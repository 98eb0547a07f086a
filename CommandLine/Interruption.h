// Ending the program when the user or the system asks for it.
#pragma once

#include <mutex>

namespace quillmere::cli {

/// Catches SIGINT, SIGTERM and SIGHUP on a thread of its own, and ends the process with exit code
/// 130: at once while a network runs, after the end of a file that is being written. A second
/// signal doesn't wait for that file either.
///
/// To be made once, before any other thread, so that no other thread takes the signals.
class Interruption {
public:
    Interruption();

    /// While it is held, the first signal waits.
    [[nodiscard]] std::unique_lock<std::mutex> whileWriting() { return std::unique_lock(writing_); }

private:
    std::mutex writing_;
};

}  // namespace quillmere::cli
