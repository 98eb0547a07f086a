#include "Desktop/Photos/TagTexts.h"

#include <array>
#include <charconv>
#include <ctime>
#include <regex>

namespace quillmere {
namespace {

using Match = std::match_results<std::string_view::const_iterator>;

int numberOf(const Match& match, std::size_t group) {
    return match[group].matched ? std::stoi(match[group].str()) : 0;
}

/// Minutes east of UTC.
std::optional<int> offsetOf(std::string_view zone) {
    static const std::regex form("([+-])(\\d{2}):?(\\d{2})");
    if (zone == "Z") return 0;
    Match match;
    if (!std::regex_match(zone.begin(), zone.end(), match, form)) return std::nullopt;
    const int minutes = numberOf(match, 2) * 60 + numberOf(match, 3);
    return match[1] == "-" ? -minutes : minutes;
}

std::optional<Date> localDate(std::tm fields) {
    fields.tm_isdst = -1;
    tzset();
    const std::time_t time = std::mktime(&fields);
    if (time == -1) return std::nullopt;
    return std::chrono::system_clock::from_time_t(time);
}

}  // namespace

std::optional<Date> dateOfText(std::string_view text, std::string_view zone) {
    static const std::regex form(
        "(\\d{4})[:/-](\\d{2})[:/-](\\d{2})(?:[ T](\\d{2}):(\\d{2})(?::(\\d{2})(?:\\.\\d+)?)?)?"
        "\\s*(Z|[+-]\\d{2}:?\\d{2})?\\s*");
    Match match;
    if (!std::regex_match(text.begin(), text.end(), match, form)) return std::nullopt;
    using namespace std::chrono;
    const year_month_day day{year(numberOf(match, 1)), month(unsigned(numberOf(match, 2))),
                             std::chrono::day(unsigned(numberOf(match, 3)))};
    const int hour = numberOf(match, 4);
    const int minute = numberOf(match, 5);
    const int second = numberOf(match, 6);
    // Cameras without a clock write the year 0.
    if (!day.ok() || day.year() < year(1800) || hour > 23 || minute > 59 || second > 60) {
        return std::nullopt;
    }
    const auto offset = offsetOf(match[7].matched ? match[7].str() : zone);
    if (offset) return sys_days(day) + hours(hour) + minutes(minute - *offset) + seconds(second);
    std::tm fields{};
    fields.tm_year = int(day.year()) - 1900;
    fields.tm_mon = static_cast<int>(unsigned(day.month())) - 1;
    fields.tm_mday = static_cast<int>(unsigned(day.day()));
    fields.tm_hour = hour;
    fields.tm_min = minute;
    fields.tm_sec = second;
    return localDate(fields);
}

std::optional<Location> locationOfISO6709(std::string_view text) {
    static const std::regex form(
        "([+-]\\d{2}(?:\\.\\d+)?)([+-]\\d{3}(?:\\.\\d+)?)([+-]\\d+(?:\\.\\d+)?)?(?:CRS.*)?/?");
    Match match;
    if (!std::regex_match(text.begin(), text.end(), match, form)) return std::nullopt;
    Location location;
    location.latitude = std::stod(match[1].str());
    location.longitude = std::stod(match[2].str());
    if (match[3].matched) location.altitude = std::stod(match[3].str());
    return location;
}

std::optional<double> degreesOfXMP(std::string_view text) {
    static const std::regex form(
        "(\\d{1,3}),(\\d{1,2}(?:\\.\\d+)?)(?:,(\\d{1,2}(?:\\.\\d+)?))?([NSEW])");
    Match match;
    if (!std::regex_match(text.begin(), text.end(), match, form)) return std::nullopt;
    double degrees = std::stod(match[1].str()) + std::stod(match[2].str()) / 60;
    if (match[3].matched) degrees += std::stod(match[3].str()) / 3600;
    return match[4] == "S" || match[4] == "W" ? -degrees : degrees;
}

}  // namespace quillmere
