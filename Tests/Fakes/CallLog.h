// The order of calls across several fakes, as readable lines.
#pragma once

#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace quillmere {

/// Fakes of one test share a log, so that the order between ports can be told. Any thread.
class CallLog {
public:
    void record(std::string line) {
        const std::lock_guard lock(mutex_);
        lines_.push_back(std::move(line));
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
