// A field that others can watch.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <utility>

namespace quillmere {

/// Ends a subscription when it goes. Once it is gone, no call to its observer is running or
/// comes later, unless the observer itself let it go. It may outlive the field.
class Subscription {
public:
    Subscription() = default;
    explicit Subscription(std::function<void()> end) : end_(std::move(end)) {}
    Subscription(Subscription&& other) noexcept : end_(std::exchange(other.end_, nullptr)) {}
    Subscription& operator=(Subscription&& other) noexcept {
        if (this != &other) {
            reset();
            end_ = std::exchange(other.end_, nullptr);
        }
        return *this;
    }
    ~Subscription() { reset(); }

    void reset() {
        if (const auto end = std::exchange(end_, nullptr)) end();
    }

private:
    std::function<void()> end_;
};

/// A value, its setter, and the observers that hear of each `set`, equal values included.
///
/// Any thread may read and write. Observers run on the writer's thread, one call at a time, in
/// the order of subscribing, and get the value of the `set` that calls them; an observer may read,
/// write and subscribe, and must not wait for another thread that does.
template <class T>
class Published {
public:
    using Observer = std::function<void(const T& value)>;

    explicit Published(T value = {}) : shared_(std::make_shared<Shared>(std::move(value))) {}
    Published(const Published&) = delete;
    Published& operator=(const Published&) = delete;

    T get() const {
        const std::lock_guard lock(shared_->valueMutex);
        return shared_->value;
    }

    void set(T value) {
        const auto shared = shared_;  // an observer may end the field's owner
        const std::lock_guard oneCall(shared->callMutex);
        {
            const std::lock_guard lock(shared->valueMutex);
            shared->value = value;
        }
        // Observers may come and go meanwhile, so walk by number and hold none across a call.
        auto& observers = shared->observers;
        for (auto next = observers.begin(); next != observers.end();) {
            const auto [number, observer] = *next;
            observer(value);
            next = observers.upper_bound(number);
        }
    }

    [[nodiscard]] Subscription subscribe(Observer observer) {
        const std::lock_guard oneCall(shared_->callMutex);
        const auto number = shared_->nextNumber++;
        shared_->observers.emplace(number, std::move(observer));
        return Subscription([weak = std::weak_ptr(shared_), number] {
            const auto shared = weak.lock();
            if (!shared) return;
            const std::lock_guard noCall(shared->callMutex);
            shared->observers.erase(number);
        });
    }

private:
    struct Shared {
        explicit Shared(T initial) : value(std::move(initial)) {}

        std::mutex valueMutex;
        T value;
        std::recursive_mutex callMutex;  // recursive: observers may come back
        std::map<std::uint64_t, Observer> observers;
        std::uint64_t nextNumber = 0;
    };

    std::shared_ptr<Shared> shared_;
};

}  // namespace quillmere
