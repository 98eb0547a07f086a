#pragma once

#include <array>
#include <cstdio>
#include <string>
#include <utility>

#include "Platform/Localization/DateFormatter.h"

namespace quillmere {

/// A user whose zone lies `offset` east of UTC, summer and winter.
class FakeDateFormatter final : public DateFormatter {
public:
    std::string stringFromDate(Date date, std::string_view dateFormat,
                               TimeZone zone) const override {
        using namespace std::chrono;
        const auto second = floor<seconds>(zone == TimeZone::local ? date + offset : date);
        const auto day = floor<days>(second);
        const year_month_day calendar(day);
        const hh_mm_ss clock(second - day);
        std::string text(dateFormat);
        const auto put = [&](std::string_view letters, long value) {
            std::array<char, 24> digits{};
            std::snprintf(digits.data(), digits.size(), "%0*ld", static_cast<int>(letters.size()),
                          value);
            const auto at = text.find(letters);
            if (at != std::string::npos) text.replace(at, letters.size(), digits.data());
        };
        put("yyyy", int{calendar.year()});
        put("MM", unsigned{calendar.month()});
        put("dd", unsigned{calendar.day()});
        put("HH", clock.hours().count());
        put("mm", clock.minutes().count());
        put("ss", clock.seconds().count());
        return text;
    }

    std::chrono::hours offset{0};
};

}  // namespace quillmere
