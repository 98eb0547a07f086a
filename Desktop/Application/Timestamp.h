// A moment as records and reports write it.
#pragma once

#include <chrono>
#include <string>

namespace quillmere {

/// In UTC with milliseconds, by ISO 8601: "2026-11-23T02:52:00.123Z".
std::string timestamp(std::chrono::system_clock::time_point moment);

}  // namespace quillmere
