#include "CommandLine/SettingsCommand.h"

#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>

namespace quillmere::cli {
namespace {

void printJSON(const Setting& setting, const SettingValue& value) {
    nlohmann::ordered_json line = {{"key", setting.key}};
    std::visit([&](const auto& plain) { line["value"] = plain; }, value);
    std::printf("%s\n", line.dump().c_str());
}

void printRow(const Setting& setting, const SettingValue& value) {
    std::printf("%-24s %-6s %s\n", std::string(setting.key).c_str(), textOf(value).c_str(),
                std::string(setting.meaning).c_str());
}

}  // namespace

int runSettings(const SettingsOptions& options, DesktopUserDefaults& userDefaults) {
    if (!options.setting) {
        for (const Setting& setting : allSettings()) {
            const SettingValue value = readSetting(setting, userDefaults);
            options.json ? printJSON(setting, value) : printRow(setting, value);
        }
        return 0;
    }
    const Setting& setting = *options.setting;
    if (options.value) {
        writeSetting(setting, *options.value, userDefaults);
        if (!userDefaults.isStored()) return 1;
    }
    const SettingValue value = readSetting(setting, userDefaults);
    if (options.json) {
        printJSON(setting, value);
    } else if (!options.value) {
        std::printf("%s\n", textOf(value).c_str());
    }
    return 0;
}

}  // namespace quillmere::cli
