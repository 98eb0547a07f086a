// An event with what the record adds to it.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "Platform/Analytics/Analytics.h"

namespace quillmere {

struct RecordedEvent {
    std::chrono::system_clock::time_point time;
    std::string name;
    std::optional<AnalyticsParameters> parameters;
};

/// {"time": "2026-11-23T02:52:00.123Z", "process": 4711, "event": "TryConvert",
/// "parameters": {"Style": "1"}} with a line feed; `parameters` is null where there are none. Bytes
/// that are no UTF-8 are replaced.
std::string eventLine(const RecordedEvent& event);

/// {"time": ..., "process": 4711, "dropped": 12}, likewise: so many events before this line were
/// not recorded.
std::string droppedLine(std::chrono::system_clock::time_point time, std::uint64_t count);

}  // namespace quillmere
