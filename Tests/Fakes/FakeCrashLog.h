#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "Platform/CrashLog/CrashLog.h"

namespace quillmere {

/// Keeps every line.
class FakeCrashLog final : public CrashLog {
public:
    void log(std::string_view line) override {
        std::string kept(line);
        if (kept.size() > longestLine) {
            std::size_t end = longestLine;
            while (end > 0 && (kept[end] & 0xC0) == 0x80) --end;
            kept.resize(end);
        }
        for (char& c : kept) {
            if ((c >= 0 && c < ' ') || c == 0x7F) c = ' ';
        }
        const std::lock_guard lock(mutex_);
        lines_.push_back(std::move(kept));
    }

    std::vector<std::string> lines() const {
        const std::lock_guard lock(mutex_);
        return lines_;
    }

private:
    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
};

}  // namespace quillmere
