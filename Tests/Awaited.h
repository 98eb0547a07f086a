// A value that a test waits for.
#pragma once

#include <condition_variable>
#include <mutex>
#include <optional>
#include <utility>

namespace quillmere {

/// Set once, by another thread. It may go as soon as `get` has returned, which can't be said of a
/// promise.
template <class T>
class Awaited {
public:
    void set(T value) {
        const std::lock_guard lock(mutex_);
        value_ = std::move(value);
        isSet_.notify_all();
    }

    T get() {
        std::unique_lock lock(mutex_);
        isSet_.wait(lock, [this] { return value_.has_value(); });
        return *std::move(value_);
    }

private:
    std::mutex mutex_;
    std::condition_variable isSet_;
    std::optional<T> value_;
};

}  // namespace quillmere
