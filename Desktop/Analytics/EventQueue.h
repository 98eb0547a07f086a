// Events between the threads that have some to record and the one that writes.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <vector>

#include "Desktop/Analytics/RecordedEvent.h"

namespace quillmere {

/// Bounded: what does not fit is dropped and counted, so that nobody ever waits.
class EventQueue {
public:
    /// Larger events are dropped: together at most `capacity` times this much waits. In bytes of
    /// the name and the parameters.
    static constexpr std::size_t largestEvent = 4096;

    /// In events.
    explicit EventQueue(std::size_t capacity) : capacity_(capacity) {}

    /// Any thread. After `close`, everything is dropped.
    void push(std::string_view name, const std::optional<AnalyticsParameters>& parameters);

    /// No more events; `next` gives what is there and then nothing.
    void close();

    struct Batch {
        std::vector<RecordedEvent> events;
        std::uint64_t dropped = 0;  // since the batch before
    };

    /// For the one writer: waits for the first event, and then a moment for more, so that a busy
    /// time costs few wake-ups and few writes. Nothing when the queue is closed and empty.
    std::optional<Batch> next();

private:
    std::size_t capacity_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<RecordedEvent> events_;
    std::uint64_t dropped_ = 0;
    bool closed_ = false;
};

}  // namespace quillmere
