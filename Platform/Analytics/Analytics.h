// Recording what happened, fire and forget.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace quillmere {

/// Numbers are their decimal text.
using AnalyticsParameters = std::map<std::string, std::string>;

/// May be called from any thread; never fails towards its caller, and never makes it wait. The
/// events of one thread keep their order.
class Analytics {
public:
    virtual ~Analytics() = default;

    /// An event without data has no parameters, rather than empty ones.
    virtual void logEventWithName(std::string_view name,
                                  const std::optional<AnalyticsParameters>& parameters) = 0;
};

}  // namespace quillmere
