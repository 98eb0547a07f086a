// The arguments of `quillmere-cli library`.
#pragma once

#include <string>

#include "CommandLine/CommandArguments.h"

namespace quillmere::cli {

class LibraryArguments final : public CommandArguments {
public:
    explicit LibraryArguments(CLI::App& app);

    Command command() override;

private:
    LibraryOptions options_;
    CLI::App* scan_;
    CLI::App* show_;
};

}  // namespace quillmere::cli
