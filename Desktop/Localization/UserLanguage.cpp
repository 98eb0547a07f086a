#include "Desktop/Localization/UserLanguage.h"

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <vector>

namespace quillmere {
namespace {

/// Empty parts are left out.
std::vector<std::string_view> split(std::string_view text, std::string_view separators) {
    std::vector<std::string_view> parts;
    while (!text.empty()) {
        const auto end = std::min(text.find_first_of(separators), text.size());
        if (end > 0) parts.push_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return parts;
}

/// Without encoding and variant.
std::string_view nameOf(std::string_view locale) {
    return locale.substr(0, std::min(locale.find_first_of(".@"), locale.size()));
}

bool isC(std::string_view locale) { return nameOf(locale) == "C" || nameOf(locale) == "POSIX"; }

/// Chinese without more is simplified; a script says more than a region.
bool isSimplified(const std::vector<std::string_view>& parts) {
    const auto has = [&](std::string_view part) { return std::ranges::count(parts, part) > 0; };
    return has("Hans") || has("CN") || has("SG") || parts.size() == 1;
}

std::optional<std::string_view> languageOf(std::string_view locale) {
    if (isC(locale)) return languages.front();
    if (locale == pseudoLanguage) return pseudoLanguage;
    const auto parts = split(nameOf(locale), "_-");
    if (parts.empty()) return std::nullopt;
    if (parts.front() == "zh") {
        return isSimplified(parts) ? std::optional<std::string_view>("zh-Hans") : std::nullopt;
    }
    const auto found = std::ranges::find(languages, parts.front());
    return found == languages.end() ? std::nullopt : std::optional(*found);
}

std::string_view variable(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

}  // namespace

std::string_view bestLanguage(std::string_view locales) {
    for (const std::string_view locale : split(locales, ":")) {
        if (const auto language = languageOf(locale)) return *language;
    }
    return languages.front();
}

std::string_view userLanguage() {
    if (const auto asked = variable("QUILLMERE_LANGUAGE"); !asked.empty()) {
        return bestLanguage(asked);
    }
    std::string_view locale;
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (locale = variable(name); !locale.empty()) break;
    }
    if (isC(locale)) return languages.front();
    return bestLanguage(std::string(variable("LANGUAGE")) + ":" + std::string(locale));
}

}  // namespace quillmere
