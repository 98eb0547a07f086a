// One entry of a run's file: what survives of a process, in the smallest piece.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "Platform/CrashLog/CrashLog.h"

namespace quillmere {

struct RunRecord {
    enum class Kind : std::uint32_t { start = 1, end = 2, breadcrumb = 3 };

    Kind kind = Kind::breadcrumb;
    std::uint64_t number = 0;  // of breadcrumbs, from 0; tells their order
    std::uint32_t process = 0;
    std::chrono::system_clock::time_point time;
    std::string text;  // one line; of the start the program's name

    friend bool operator==(const RunRecord&, const RunRecord&) = default;
};

/// A run's file is a row of slots of this size, each with one record or none: first the start, then
/// the end, then breadcrumbs in a ring. In bytes.
inline constexpr std::size_t runSlotSize = 256;
inline constexpr std::size_t runStartSlot = 0;
inline constexpr std::size_t runEndSlot = 1;
inline constexpr std::size_t firstBreadcrumbSlot = 2;
inline constexpr std::size_t runSlotCount = firstBreadcrumbSlot + CrashLog::keptLines;

using RunSlot = std::array<std::byte, runSlotSize>;

/// In the machine's own order of bytes, with a checksum in front. The text becomes what
/// `breadcrumbText` makes of it.
RunSlot encodeRunRecord(const RunRecord& record);

/// Nothing for an empty slot, a torn record, or whatever else stands there.
std::optional<RunRecord> decodeRunRecord(std::span<const std::byte, runSlotSize> slot);

/// The line as the port promises to keep it: at most `CrashLog::longestLine` bytes, no control
/// characters.
std::string breadcrumbText(std::string_view line);

}  // namespace quillmere
