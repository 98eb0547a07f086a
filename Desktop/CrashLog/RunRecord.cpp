#include "Desktop/CrashLog/RunRecord.h"

#include <cstring>

namespace quillmere {
namespace {

/// As it lies in the file; no padding, and zero where the text has ended.
struct Layout {
    std::uint32_t checksum = 0;
    std::uint32_t kind = 0;
    std::uint64_t number = 0;
    std::int64_t microseconds = 0;  // since 1970
    std::uint32_t process = 0;
    std::uint32_t length = 0;  // of the text
    char text[runSlotSize - 32] = {};
};
static_assert(sizeof(Layout) == runSlotSize);
static_assert(CrashLog::longestLine <= sizeof(Layout::text));

/// FNV-1a in 32 bits (offset basis 2166136261, prime 16777619), over all but the sum itself. From a
/// slot of zeros it does not make zero, so that an empty one is no record.
std::uint32_t checksumOf(const Layout& layout) {
    const auto* byte = reinterpret_cast<const unsigned char*>(&layout);
    std::uint32_t sum = 2166136261u;
    for (std::size_t i = sizeof layout.checksum; i < sizeof layout; ++i) {
        sum = (sum ^ byte[i]) * 16777619u;
    }
    return sum;
}

bool isControl(char c) { return (c >= 0 && c < ' ') || c == 0x7F; }

bool continuesACharacter(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

}  // namespace

std::string breadcrumbText(std::string_view line) {
    std::size_t end = line.size();
    if (end > CrashLog::longestLine) {
        end = CrashLog::longestLine;
        while (end > 0 && continuesACharacter(line[end])) --end;
    }
    std::string text(line.substr(0, end));
    for (char& c : text) {
        if (isControl(c)) c = ' ';
    }
    return text;
}

RunSlot encodeRunRecord(const RunRecord& record) {
    using std::chrono::microseconds;
    const std::string text = breadcrumbText(record.text);
    Layout layout;
    layout.kind = static_cast<std::uint32_t>(record.kind);
    layout.number = record.number;
    layout.microseconds =
        std::chrono::duration_cast<microseconds>(record.time.time_since_epoch()).count();
    layout.process = record.process;
    layout.length = static_cast<std::uint32_t>(text.size());
    std::memcpy(layout.text, text.data(), text.size());
    layout.checksum = checksumOf(layout);
    RunSlot slot;
    std::memcpy(slot.data(), &layout, sizeof layout);
    return slot;
}

std::optional<RunRecord> decodeRunRecord(std::span<const std::byte, runSlotSize> slot) {
    Layout layout;
    std::memcpy(&layout, slot.data(), sizeof layout);
    if (layout.checksum != checksumOf(layout) || layout.length > CrashLog::longestLine) return {};
    if (layout.kind < 1 || layout.kind > 3) return {};
    return RunRecord{
        static_cast<RunRecord::Kind>(layout.kind), layout.number, layout.process,
        std::chrono::system_clock::time_point(std::chrono::microseconds(layout.microseconds)),
        breadcrumbText({layout.text, layout.length})};
}

}  // namespace quillmere
