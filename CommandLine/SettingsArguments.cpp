#include "CommandLine/SettingsArguments.h"

namespace quillmere::cli {
namespace {

std::map<std::string, Setting> settingsByKey() {
    std::map<std::string, Setting> keys;
    for (const Setting& setting : allSettings()) keys.emplace(std::string(setting.key), setting);
    return keys;
}

}  // namespace

SettingsArguments::SettingsArguments(CLI::App& app)
    : CommandArguments(app, "settings",
                       "List what is stored, read one setting of it, or change one"),
      settings_(settingsByKey()) {
    keyOption_ =
        arguments().add_option("KEY", key_, "One of: " + keysOf(settings_))->option_text(" ");
    valueOption_ = arguments()
                       .add_option("VALUE", value_,
                                   "What to store: jpg, heic or png for a format, 1024 or 2048 "
                                   "for the limit, true or false, or a number")
                       ->option_text(" ");
    arguments().add_flag("--json", options_.json, "One JSON object a line");
}

Command SettingsArguments::command() {
    if (!keyOption_->empty()) {
        const auto found = settings_.find(key_);
        if (found == settings_.end()) {
            return usageError("There is no setting %@; there are: %@.", {key_, keysOf(settings_)});
        }
        options_.setting = found->second;
    }
    if (!valueOption_->empty()) {
        const SettingKind kind = options_.setting->kind;
        options_.value = settingValue(kind, value_);
        if (!options_.value) {
            return usageError("%@ can't be \"%@\"; it takes: %@.",
                              {key_, value_, std::string(valuesOf(kind))});
        }
    }
    return options_;
}

}  // namespace quillmere::cli
