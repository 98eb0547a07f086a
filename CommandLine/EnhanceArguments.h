// The arguments of `quillmere-cli enhance`.
#pragma once

#include <map>
#include <string>

#include "CommandLine/CommandArguments.h"

namespace quillmere::cli {

class EnhanceArguments final : public CommandArguments {
public:
    explicit EnhanceArguments(CLI::App& app);

    Command command() override;

private:
    const std::map<std::string, EnhanceStyle> styles_;
    const std::map<std::string, PictureFormat> formats_;
    EnhanceOptions options_;
    std::string style_ = "high";
    std::string format_;
    // CLI11 makes an optional flag false where it isn't given.
    bool keepDate_ = false;
    bool keepLocation_ = false;
    CLI::Option* keepDateOption_;
    CLI::Option* keepLocationOption_;
};

}  // namespace quillmere::cli
