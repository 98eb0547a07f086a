#include "Desktop/Analytics/EventQueue.h"

#include <chrono>
#include <exception>
#include <utility>

namespace quillmere {
namespace {

constexpr std::chrono::milliseconds gathering{100};

std::size_t sizeOf(std::string_view name, const std::optional<AnalyticsParameters>& parameters) {
    std::size_t size = name.size();
    if (!parameters) return size;
    for (const auto& [key, value] : *parameters) size += key.size() + value.size();
    return size;
}

}  // namespace

void EventQueue::push(std::string_view name, const std::optional<AnalyticsParameters>& parameters) {
    std::optional<RecordedEvent> event;
    try {
        if (sizeOf(name, parameters) <= largestEvent) {
            event = {std::chrono::system_clock::now(), std::string(name), parameters};
        }
    } catch (const std::exception&) {
        event.reset();  // too little memory is no reason to trouble the caller
    }
    std::size_t waiting = 0;
    {
        const std::lock_guard lock(mutex_);
        if (!event || closed_ || events_.size() == capacity_) {
            ++dropped_;
            return;
        }
        // Room for all at once, so that nobody pays for a growing vector.
        if (events_.capacity() < capacity_) events_.reserve(capacity_);
        events_.push_back(*std::move(event));
        waiting = events_.size();
    }
    // Between these two the writer knows that there is something, and gathers.
    if (waiting == 1 || waiting == capacity_ / 2) changed_.notify_one();
}

void EventQueue::close() {
    const std::lock_guard lock(mutex_);
    closed_ = true;
    changed_.notify_one();
}

std::optional<EventQueue::Batch> EventQueue::next() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return closed_ || !events_.empty(); });
    changed_.wait_for(lock, gathering,
                      [this] { return closed_ || events_.size() >= capacity_ / 2; });
    if (events_.empty() && dropped_ == 0) return std::nullopt;
    return Batch{std::exchange(events_, {}), std::exchange(dropped_, 0)};
}

}  // namespace quillmere
