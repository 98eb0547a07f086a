// The arguments of `quillmere-cli video`.
#pragma once

#include <map>
#include <string>

#include "CommandLine/CommandArguments.h"

namespace quillmere::cli {

class VideoArguments final : public CommandArguments {
public:
    explicit VideoArguments(CLI::App& app);

    Command command() override;

private:
    const std::map<std::string, EnhanceStyle> styles_;
    VideoOptions options_;
    std::string style_ = "rapidHQ";
};

}  // namespace quillmere::cli
