// Recording what happened, fire and forget.
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace quillmere {

using AnalyticsParameters = std::map<std::string, std::string>;

/// May be called from any thread, and never fails towards its caller.
class Analytics {
public:
    virtual ~Analytics() = default;

    virtual void logEventWithName(std::string_view name, const AnalyticsParameters& parameters) = 0;
};

}  // namespace quillmere
