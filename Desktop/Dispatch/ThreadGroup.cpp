#include "Desktop/Dispatch/ThreadGroup.h"

#include <thread>
#include <utility>

namespace quillmere {

void ThreadGroup::start(std::function<void()> body) {
    {
        const std::lock_guard lock(mutex_);
        ++running_;
    }
    std::thread([this, body = std::move(body)]() mutable {
        body();
        body = nullptr;  // what the body holds goes before the group may go
        const std::lock_guard lock(mutex_);
        --running_;
        ended_.notify_all();  // under the lock: after it, the group may be gone
    }).detach();
}

void ThreadGroup::waitForAll() {
    std::unique_lock lock(mutex_);
    ended_.wait(lock, [this] { return running_ == 0; });
}

}  // namespace quillmere
