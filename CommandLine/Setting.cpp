#include "CommandLine/Setting.h"

#include <array>
#include <charconv>

#include "Base/Invariant.h"
#include "CommandLine/PictureFormat.h"
#include "Quillmere/Models/Services/PreferenceKeys.h"
#include "Quillmere/Models/Services/ResolutionLimit.h"

namespace quillmere::cli {
namespace {

constexpr std::int64_t lowLimit = 1024, highLimit = 2048;

constexpr std::array settings{
    Setting{imageFormatKey, SettingKind::format, "the format of results"},
    Setting{resolutionLimitIndexKey, SettingKind::limit,
            "the longest side of the picture that is enlarged, in pixels"},
    Setting{preserveCreationDateKey, SettingKind::toggle,
            "whether a saved picture keeps its source's date"},
    Setting{preserveLocationKey, SettingKind::toggle,
            "whether a saved picture keeps its source's place"},
    Setting{enableCropKey, SettingKind::toggle,
            "whether the application offers to crop a picture first"},
    Setting{reviewCountKey, SettingKind::count, "how many single pictures were saved"},
    Setting{launchCountKey, SettingKind::count, "how often the application was started"},
};

std::optional<SettingValue> countNamed(const std::string& text) {
    std::int64_t count = 0;
    const char* end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data(), end, count);
    if (parsed.ec != std::errc() || parsed.ptr != end || count < 0) return std::nullopt;
    return count;
}

}  // namespace

std::span<const Setting> allSettings() { return settings; }

std::string_view valuesOf(SettingKind kind) {
    switch (kind) {
        case SettingKind::format:
            return "jpg, heic, png";
        case SettingKind::limit:
            return "1024, 2048";
        case SettingKind::toggle:
            return "true, false";
        case SettingKind::count:
            return "0, 1, 2, …";
    }
    invariantBroken();
}

std::optional<SettingValue> settingValue(SettingKind kind, const std::string& text) {
    switch (kind) {
        case SettingKind::format:
            if (!formatNamed(text)) return std::nullopt;
            return text;
        case SettingKind::limit:
            if (text == std::to_string(lowLimit)) return lowLimit;
            if (text == std::to_string(highLimit)) return highLimit;
            return std::nullopt;
        case SettingKind::toggle:
            if (text == "true") return true;
            if (text == "false") return false;
            return std::nullopt;
        case SettingKind::count:
            return countNamed(text);
    }
    invariantBroken();
}

std::string textOf(const SettingValue& value) {
    if (const auto* toggle = std::get_if<bool>(&value)) return *toggle ? "true" : "false";
    if (const auto* number = std::get_if<std::int64_t>(&value)) return std::to_string(*number);
    return std::get<std::string>(value);
}

SettingValue readSetting(const Setting& setting, const UserDefaults& userDefaults) {
    switch (setting.kind) {
        case SettingKind::format:
            return std::string(formatName(UserDefaultsHelper::imageFormat(userDefaults)));
        case SettingKind::limit:
            return static_cast<std::int64_t>(resolutionLimit(userDefaults));
        case SettingKind::toggle:
            return userDefaults.boolForKey(setting.key);
        case SettingKind::count:
            return userDefaults.integerForKey(setting.key);
    }
    invariantBroken();
}

void writeSetting(const Setting& setting, const SettingValue& value, UserDefaults& userDefaults) {
    switch (setting.kind) {
        case SettingKind::format: {
            const auto format = formatNamed(std::get<std::string>(value));
            if (!format) invariantBroken();
            return userDefaults.setInteger(static_cast<std::int64_t>(*format), setting.key);
        }
        case SettingKind::limit:
            return userDefaults.setInteger(std::get<std::int64_t>(value) == lowLimit ? 0 : 1,
                                           setting.key);
        case SettingKind::toggle:
            return userDefaults.setBool(std::get<bool>(value), setting.key);
        case SettingKind::count:
            return userDefaults.setInteger(std::get<std::int64_t>(value), setting.key);
    }
    invariantBroken();
}

}  // namespace quillmere::cli
