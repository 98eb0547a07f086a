#pragma once

#include <string>

#include "Platform/Analytics/Analytics.h"
#include "Tests/Fakes/CallLog.h"

namespace quillmere {

/// Logs each event as `event NAME KEY=VALUE ...`.
class FakeAnalytics final : public Analytics {
public:
    explicit FakeAnalytics(CallLog& log) : log_(log) {}

    void logEventWithName(std::string_view name, const AnalyticsParameters& parameters) override {
        std::string line = "event " + std::string(name);
        for (const auto& [key, value] : parameters) line += " " + key + "=" + value;
        log_.record(line);
    }

private:
    CallLog& log_;
};

}  // namespace quillmere
