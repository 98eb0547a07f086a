#include "Desktop/Dispatch/Clock.h"

#include <utility>

namespace quillmere {

SteadyClock::SteadyClock() : thread_([this] { run(); }) {}

SteadyClock::~SteadyClock() { stop(); }

void SteadyClock::stop() {
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    changed_.notify_one();
    if (thread_.joinable()) thread_.join();
    calls_.clear();  // outside the lock: what a call holds may come back here when it goes
}

std::chrono::nanoseconds SteadyClock::now() const {
    return std::chrono::steady_clock::now().time_since_epoch();
}

void SteadyClock::callAfter(std::chrono::nanoseconds delay, std::function<void()> call) {
    {
        const std::lock_guard lock(mutex_);
        if (stopping_) return;
        calls_.emplace(now() + delay, std::move(call));
    }
    changed_.notify_one();
}

void SteadyClock::run() {
    std::unique_lock lock(mutex_);
    while (!stopping_) {
        if (calls_.empty()) {
            changed_.wait(lock);
            continue;
        }
        const auto due = calls_.begin()->first;
        if (now() < due) {
            changed_.wait_until(lock, std::chrono::steady_clock::time_point(due));
            continue;
        }
        auto entry = calls_.extract(calls_.begin());
        lock.unlock();
        entry.mapped()();
        lock.lock();
    }
}

}  // namespace quillmere
