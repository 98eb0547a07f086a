#include "Desktop/RemoteConfig/ConfigValues.h"

#include <strings.h>

#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace quillmere {
namespace {

std::string decimalOf(double number) {
    std::array<char, 32> text{};  // the longest shortest decimal has 24 letters
    const auto end = std::to_chars(text.data(), text.data() + text.size(), number).ptr;
    return {text.data(), end};
}

double numberOf(const std::string& text) {
    double number = 0;
    const char* end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data(), end, number);
    return parsed.ec == std::errc() && parsed.ptr == end && std::isfinite(number) ? number : 0;
}

std::int64_t integerOf(double number) {
    using Limits = std::numeric_limits<std::int64_t>;
    // 2 to the power of 63 has a double, the largest integer has none.
    if (number >= -static_cast<double>(Limits::min())) return Limits::max();
    if (number <= static_cast<double>(Limits::min())) return Limits::min();
    return static_cast<std::int64_t>(number);
}

bool meansYes(const std::string& text) {
    for (const char* yes : {"true", "yes", "1"}) {
        if (strcasecmp(text.c_str(), yes) == 0) return true;
    }
    return false;
}

}  // namespace

RemoteConfigValue remoteConfigValue(const ConfigValue& value, RemoteConfigSource source) {
    RemoteConfigValue read;
    read.source = source;
    if (const auto* boolean = std::get_if<bool>(&value)) {
        read.stringValue = *boolean ? "true" : "false";
        read.boolValue = *boolean;
        read.numberValue = *boolean ? 1 : 0;
    } else if (const auto* number = std::get_if<double>(&value)) {
        read.stringValue = decimalOf(*number);
        read.boolValue = *number != 0;
        read.numberValue = *number;
    } else if (const auto* text = std::get_if<std::string>(&value)) {
        read.stringValue = *text;
        read.boolValue = meansYes(*text);
        read.numberValue = numberOf(*text);
    }
    read.integerValue = integerOf(read.numberValue);
    return read;
}

}  // namespace quillmere
