// The stored settings as one reads and writes them on the command line.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "Platform/UserDefaults/UserDefaults.h"

namespace quillmere::cli {

/// What a setting is, which decides how its value is written:
/// `format` as jpg, heic or png; `limit` in pixels, as 1024 or 2048, both like the options of
/// `enhance`; `toggle` as true or false; `count` as a number from 0.
enum class SettingKind { format, limit, toggle, count };

using SettingValue = std::variant<bool, std::int64_t, std::string>;

struct Setting {
    std::string_view key;
    SettingKind kind;
    std::string_view meaning;
};

/// All seven, the ones that a user chooses first.
std::span<const Setting> allSettings();

/// The values of that kind, in no language, for a user who wrote another.
std::string_view valuesOf(SettingKind kind);

/// Nothing for a text that is no value of that kind.
std::optional<SettingValue> settingValue(SettingKind kind, const std::string& text);
std::string textOf(const SettingValue& value);

/// What is stored, as the application takes it: a stored number that is no format counts as jpg.
SettingValue readSetting(const Setting& setting, const UserDefaults& userDefaults);
/// `value` is one of the setting's kind.
void writeSetting(const Setting& setting, const SettingValue& value, UserDefaults& userDefaults);

}  // namespace quillmere::cli
