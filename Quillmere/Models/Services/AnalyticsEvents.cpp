#include "Quillmere/Models/Services/AnalyticsEvents.h"

#include <cstddef>
#include <string>

namespace quillmere {

bool isInVocabulary(std::string_view name, const std::optional<AnalyticsParameters>& parameters) {
    const auto event = analyticsEventWithName(name);
    if (!event) return false;
    if (!parameters) return event->parameters.front().empty();
    std::size_t expected = 0;
    for (const std::string_view parameter : event->parameters) {
        if (parameter.empty()) continue;
        if (!parameters->contains(std::string(parameter))) return false;
        ++expected;
    }
    const bool optionalOne = !event->optionalParameter.empty() &&
                             parameters->contains(std::string(event->optionalParameter));
    return expected > 0 && parameters->size() == expected + (optionalOne ? 1 : 0);
}

}  // namespace quillmere
