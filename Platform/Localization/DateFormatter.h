// Moments as texts, in the user's time zone or in UTC.
#pragma once

#include <string>
#include <string_view>

#include "Base/Date.h"

namespace quillmere {

/// May be called from any thread.
class DateFormatter {
public:
    enum class TimeZone { local, utc };

    virtual ~DateFormatter() = default;

    /// `date` by `dateFormat`, in the Gregorian calendar and digits 0 to 9: "yyyy" is the year,
    /// "MM" the month, "dd" the day, "HH" the hour of 24, "mm" the minute, "ss" the second, all
    /// with leading zeros; what is no letter stands for itself. Any other letter is a broken
    /// invariant. Parts of a second are cut off.
    ///
    /// `local` is the zone that the user has at the time of the call, with the rule for summer
    /// time that it had at `date`.
    virtual std::string stringFromDate(Date date, std::string_view dateFormat,
                                       TimeZone zone) const = 0;
};

}  // namespace quillmere
