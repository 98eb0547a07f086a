// What the user does, recorded on this machine only: nothing is ever sent.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <optional>
#include <thread>

#include "Desktop/Analytics/EventFile.h"
#include "Desktop/Analytics/EventQueue.h"
#include "Platform/Analytics/Analytics.h"

namespace quillmere {

/// Callers put events into a bounded queue; a thread writes them to an `EventFile`. What the queue
/// or the disk does not take is dropped, and the next line that is written says how much that was.
class EventLog final : public Analytics {
public:
    /// How many events may wait for the writer.
    static constexpr std::size_t queueCapacity = 1024;

    /// Without a folder, nothing is recorded.
    explicit EventLog(const std::optional<std::filesystem::path>& folder,
                      const EventFile::Limits& limits = {});
    /// Writes what waits.
    ~EventLog() override;

    void logEventWithName(std::string_view name,
                          const std::optional<AnalyticsParameters>& parameters) override;

    /// Writes what waits, and takes no more. For the end of a process that does not destroy this
    /// object; gives up after `atMost`, for there may be a disk that never answers. Any thread.
    void end(std::chrono::milliseconds atMost);

private:
    void write();
    void record(const EventQueue::Batch& batch);

    EventQueue queue_{queueCapacity};
    std::optional<EventFile> file_;
    std::uint64_t dropped_ = 0;  // not yet told in the file; the writer's
    std::mutex mutex_;
    std::condition_variable ended_;
    bool writing_ = false;
    std::thread writer_;
};

}  // namespace quillmere
