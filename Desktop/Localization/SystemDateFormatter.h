// Dates by the C library's calendar and its database of time zones.
#pragma once

#include "Platform/Localization/DateFormatter.h"

namespace quillmere {

/// The user's zone is that of the variable TZ, or else of the system.
class SystemDateFormatter final : public DateFormatter {
public:
    std::string stringFromDate(Date date, std::string_view dateFormat,
                               TimeZone zone) const override;
};

}  // namespace quillmere
