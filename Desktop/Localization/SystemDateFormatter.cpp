#include "Desktop/Localization/SystemDateFormatter.h"

#include <array>
#include <cstdio>
#include <ctime>

#include "Base/Invariant.h"

namespace quillmere {
namespace {

std::tm fieldsOf(Date date, DateFormatter::TimeZone zone) {
    using namespace std::chrono;
    const std::time_t time = system_clock::to_time_t(floor<seconds>(date));
    std::tm fields{};
    if (zone == DateFormatter::TimeZone::utc) {
        gmtime_r(&time, &fields);
    } else {
        tzset();  // or a zone that the user changes since would stay the old one
        localtime_r(&time, &fields);
    }
    return fields;
}

int numberFor(std::string_view letters, const std::tm& fields) {
    if (letters == "yyyy") return fields.tm_year + 1900;
    if (letters == "MM") return fields.tm_mon + 1;
    if (letters == "dd") return fields.tm_mday;
    if (letters == "HH") return fields.tm_hour;
    if (letters == "mm") return fields.tm_min;
    if (letters == "ss") return fields.tm_sec;
    invariantBroken();
}

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

}  // namespace

std::string SystemDateFormatter::stringFromDate(Date date, std::string_view dateFormat,
                                                TimeZone zone) const {
    const std::tm fields = fieldsOf(date, zone);
    std::string text;
    while (!dateFormat.empty()) {
        std::size_t length = 1;
        if (!isLetter(dateFormat.front())) {
            text += dateFormat.front();
        } else {
            while (length < dateFormat.size() && dateFormat[length] == dateFormat[0]) ++length;
            std::array<char, 16> digits{};
            std::snprintf(digits.data(), digits.size(), "%0*d", static_cast<int>(length),
                          numberFor(dateFormat.substr(0, length), fields));
            text += digits.data();
        }
        dateFormat.remove_prefix(length);
    }
    return text;
}

}  // namespace quillmere
