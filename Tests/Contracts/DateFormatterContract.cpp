// What every implementation of `DateFormatter` owes its callers.
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

#include "Desktop/Localization/SystemDateFormatter.h"
#include "Tests/Fakes/FakeDateFormatter.h"

namespace quillmere {
namespace {

using namespace std::chrono;
using TimeZone = DateFormatter::TimeZone;

class DateFormatterContract : public testing::TestWithParam<bool> {
protected:
    DateFormatterContract() {
        setenv("TZ", "EAST-9", 1);  // nine hours ahead
        if (GetParam()) {
            formatter = std::make_unique<SystemDateFormatter>();
        } else {
            auto fake = std::make_unique<FakeDateFormatter>();
            fake->offset = 9h;
            formatter = std::move(fake);
        }
    }
    ~DateFormatterContract() override { unsetenv("TZ"); }

    std::unique_ptr<DateFormatter> formatter;
};

INSTANTIATE_TEST_SUITE_P(Both, DateFormatterContract, testing::Values(false, true),
                         [](const auto& desktop) { return desktop.param ? "Desktop" : "Fake"; });

TEST_P(DateFormatterContract, TellsEachMomentInItsZone) {
    const Date evening = sys_days(2024y / February / 29) + 20h + 5min + 9s;
    const Date beforeTheEpoch = sys_days(1969y / December / 31) + 23h + 59min + 59s + 700ms;
    const struct {
        Date date;
        const char* format;
        TimeZone zone;
        const char* text;
    } cases[] = {
        {evening, "yyyy:MM:dd HH:mm:ss", TimeZone::utc, "2024:02:29 20:05:09"},
        {evening, "yyyy:MM:dd HH:mm:ss", TimeZone::local, "2024:03:01 05:05:09"},
        {evening, "yyyy:MM:dd", TimeZone::utc, "2024:02:29"},
        {evening, "HH:mm:ss", TimeZone::utc, "20:05:09"},
        {beforeTheEpoch, "yyyy-MM-dd HH.mm.ss", TimeZone::utc, "1969-12-31 23.59.59"},
    };
    for (const auto& [date, format, zone, text] : cases) {
        EXPECT_EQ(formatter->stringFromDate(date, format, zone), text) << format;
    }
}

TEST(SystemDateFormatter, KnowsSummerTimeAndAZoneThatTheUserChanges) {
    const SystemDateFormatter formatter;
    const auto hour = [&](Date date) {
        return formatter.stringFromDate(date, "HH", TimeZone::local);
    };
    setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    EXPECT_EQ(hour(sys_days(2024y / January / 1) + 12h), "13");
    EXPECT_EQ(hour(sys_days(2024y / July / 1) + 12h), "14");
    setenv("TZ", "WEST5", 1);
    EXPECT_EQ(hour(sys_days(2024y / July / 1) + 12h), "07");
    unsetenv("TZ");
}

TEST(SystemDateFormatterDeathTest, AnUnknownLetterIsAMistakeOfOurs) {
    const SystemDateFormatter formatter;
    EXPECT_DEATH((void)formatter.stringFromDate({}, "yy", TimeZone::utc), "");
}

}  // namespace
}  // namespace quillmere
