// The arguments of `quillmere-cli settings`.
#pragma once

#include <map>
#include <string>

#include "CommandLine/CommandArguments.h"

namespace quillmere::cli {

class SettingsArguments final : public CommandArguments {
public:
    explicit SettingsArguments(CLI::App& app);

    Command command() override;

private:
    const std::map<std::string, Setting> settings_;
    SettingsOptions options_;
    std::string key_;
    std::string value_;
    CLI::Option* keyOption_;
    CLI::Option* valueOption_;
};

}  // namespace quillmere::cli
