// A clock that stands still until a test moves it.
#pragma once

#include <algorithm>
#include <map>
#include <mutex>
#include <utility>

#include "Desktop/Dispatch/Clock.h"

namespace quillmere {

/// Calls are made on the thread that advances the clock, each at its due time.
class ManualClock final : public Clock {
public:
    std::chrono::nanoseconds now() const override {
        const std::lock_guard lock(mutex_);
        return now_;
    }

    void callAfter(std::chrono::nanoseconds delay, std::function<void()> call) override {
        const std::lock_guard lock(mutex_);
        if (!stopped_) calls_.emplace(now_ + delay, std::move(call));
    }

    void stop() override {
        std::multimap<std::chrono::nanoseconds, std::function<void()>> dropped;
        const std::lock_guard lock(mutex_);
        stopped_ = true;
        dropped.swap(calls_);
    }

    void advanceBy(std::chrono::nanoseconds step) {
        std::unique_lock lock(mutex_);
        const auto end = now_ + step;
        while (!calls_.empty() && calls_.begin()->first <= end) {
            auto entry = calls_.extract(calls_.begin());
            now_ = std::max(now_, entry.key());
            lock.unlock();
            entry.mapped()();
            lock.lock();
        }
        now_ = end;
    }

    std::size_t pendingCalls() const {
        const std::lock_guard lock(mutex_);
        return calls_.size();
    }

private:
    mutable std::mutex mutex_;
    std::chrono::nanoseconds now_{0};
    std::multimap<std::chrono::nanoseconds, std::function<void()>> calls_;
    bool stopped_ = false;
};

}  // namespace quillmere
