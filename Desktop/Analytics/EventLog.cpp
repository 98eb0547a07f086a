#include "Desktop/Analytics/EventLog.h"

#include <exception>
#include <system_error>

namespace quillmere {

EventLog::EventLog(const std::optional<std::filesystem::path>& folder,
                   const EventFile::Limits& limits) {
    if (!folder) {
        queue_.close();
        return;
    }
    file_.emplace(*folder, limits);
    writing_ = true;
    try {
        writer_ = std::thread([this] { write(); });
    } catch (const std::system_error&) {  // too many threads
        writing_ = false;
        queue_.close();
    }
}

EventLog::~EventLog() {
    queue_.close();
    if (writer_.joinable()) writer_.join();
}

void EventLog::logEventWithName(std::string_view name,
                                const std::optional<AnalyticsParameters>& parameters) {
    queue_.push(name, parameters);
}

void EventLog::end(std::chrono::milliseconds atMost) {
    queue_.close();
    std::unique_lock lock(mutex_);
    ended_.wait_for(lock, atMost, [this] { return !writing_; });
}

void EventLog::write() {
    while (const auto batch = queue_.next()) {
        try {
            record(*batch);
        } catch (const std::exception&) {  // too little memory
            dropped_ += batch->events.size() + batch->dropped;
        }
    }
    const std::lock_guard lock(mutex_);
    writing_ = false;
    ended_.notify_all();
}

void EventLog::record(const EventQueue::Batch& batch) {
    std::vector<std::string> lines;
    for (const RecordedEvent& event : batch.events) lines.push_back(eventLine(event));
    const std::uint64_t untold = dropped_ + batch.dropped;
    if (untold > 0) {
        lines.insert(lines.begin(), droppedLine(std::chrono::system_clock::now(), untold));
    }
    const std::size_t written = file_->append(lines);
    const bool told = untold == 0 || written > 0;
    const std::size_t recorded = written - (untold > 0 && written > 0 ? 1 : 0);
    dropped_ = (told ? 0 : untold) + (batch.events.size() - recorded);
}

}  // namespace quillmere
