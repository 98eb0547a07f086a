// Keeps the machine awake while long work goes on.
#pragma once

#include <mutex>

#include "Desktop/FileManager/FileDescriptor.h"

namespace quillmere {

/// Asks the session's login manager over the system bus; where there is none, or it refuses, the
/// machine sleeps as it likes. Any thread; waits at most a second for the answer.
class SleepInhibitor {
public:
    void inhibit();
    void release();

private:
    std::mutex mutex_;
    FileDescriptor held_;  // open while it is inhibited; its end, in whatever way, lets go
};

}  // namespace quillmere
