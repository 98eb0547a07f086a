// The last steps before a crash, for whoever looks for its cause.
#pragma once

#include <cstddef>
#include <string_view>

namespace quillmere {

/// May be called from any thread; never fails towards its caller. What was logged is there for the
/// next run, however this one ends.
class CrashLog {
public:
    /// In bytes of UTF-8.
    static constexpr std::size_t longestLine = 200;
    /// So many of the last lines are kept, at least.
    static constexpr std::size_t keptLines = 64;

    virtual ~CrashLog() = default;

    /// Appends one line, a breadcrumb such as "tryFinish A". A longer line is cut between two
    /// characters, and a control character becomes a space.
    virtual void log(std::string_view line) = 0;
};

}  // namespace quillmere
