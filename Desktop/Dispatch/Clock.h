// Time, and calls that wait for it; tests put their own in its place.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <thread>

namespace quillmere {

/// May be used from any thread.
class Clock {
public:
    virtual ~Clock() = default;

    virtual std::chrono::nanoseconds now() const = 0;

    /// Makes `call` once `delay` has passed, on a thread of the clock's choosing. Calls are made
    /// in the order of their due times, equal ones in the order of asking. A call must be short.
    virtual void callAfter(std::chrono::nanoseconds delay, std::function<void()> call) = 0;

    /// Drops the calls that are waiting, and every later one; returns when none is being made.
    /// Not to be called from a call.
    virtual void stop() = 0;
};

/// The machine's monotonic clock, with a thread that makes the calls.
class SteadyClock final : public Clock {
public:
    SteadyClock();
    ~SteadyClock() override;

    std::chrono::nanoseconds now() const override;
    void callAfter(std::chrono::nanoseconds delay, std::function<void()> call) override;
    void stop() override;

private:
    void run();

    std::mutex mutex_;
    std::condition_variable changed_;
    std::multimap<std::chrono::nanoseconds, std::function<void()>> calls_;
    bool stopping_ = false;
    std::thread thread_;
};

}  // namespace quillmere
