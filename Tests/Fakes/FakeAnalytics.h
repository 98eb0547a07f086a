#pragma once

#include <gtest/gtest.h>

#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Analytics/Analytics.h"
#include "Quillmere/Models/Services/AnalyticsEvents.h"
#include "Tests/Fakes/CallLog.h"

namespace quillmere {

/// Logs each event as `event NAME KEY=VALUE ...`, and keeps it. An event that the vocabulary does
/// not know fails the test.
class FakeAnalytics final : public Analytics {
public:
    struct Event {
        std::string name;
        std::optional<AnalyticsParameters> parameters;

        friend bool operator==(const Event&, const Event&) = default;
    };

    explicit FakeAnalytics(CallLog& log) : log_(log) {}

    void logEventWithName(std::string_view name,
                          const std::optional<AnalyticsParameters>& parameters) override {
        std::string line = "event " + std::string(name);
        if (parameters) {
            for (const auto& [key, value] : *parameters) line += " " + key + "=" + value;
        }
        EXPECT_TRUE(isInVocabulary(name, parameters)) << line;
        const std::lock_guard lock(mutex_);
        log_.record(line);
        events_.push_back({std::string(name), parameters});
    }

    std::vector<Event> events() const {
        const std::lock_guard lock(mutex_);
        return events_;
    }

private:
    CallLog& log_;
    mutable std::mutex mutex_;
    std::vector<Event> events_;
};

}  // namespace quillmere
