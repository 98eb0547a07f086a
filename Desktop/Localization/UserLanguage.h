// Which of the application's languages the user reads best.
#pragma once

#include <array>
#include <string>
#include <string_view>

namespace quillmere {

/// The languages that the texts come in, as BCP 47 tags: `Strings/<tag>.json`.
inline constexpr std::array<std::string_view, 6> languages{"en", "de", "es", "fr", "ja", "zh-Hans"};

/// No language: English made longer and accented, written from right to left, so that one who
/// reads English sees what a translation would break. Only for whoever asks for it by name.
inline constexpr std::string_view pseudoLanguage = "qps-plocm";

/// The first of `locales` that is among `languages`, or else English. Locales are parted by colons
/// and written as POSIX has it or as BCP 47 does: `zh_CN.UTF-8:de`.
std::string_view bestLanguage(std::string_view locales);

/// By the variable QUILLMERE_LANGUAGE where it is set, or else as gettext decides: LANGUAGE, then
/// the first of LC_ALL, LC_MESSAGES and LANG that is set; the locale C knows no LANGUAGE.
std::string_view userLanguage();

}  // namespace quillmere
