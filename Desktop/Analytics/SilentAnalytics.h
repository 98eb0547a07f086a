// Events that go nowhere: the program keeps to itself what its user does.
#pragma once

#include "Platform/Analytics/Analytics.h"

namespace quillmere {

class SilentAnalytics final : public Analytics {
public:
    void logEventWithName(std::string_view, const AnalyticsParameters&) override {}
};

}  // namespace quillmere
