// One command's share of the command line's arguments.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <utility>
#include <vector>

#include "CommandLine/Options.h"

namespace quillmere::cli {

/// Declares its arguments when it is made, and reads them after the parse.
class CommandArguments {
public:
    virtual ~CommandArguments() = default;
    CommandArguments(const CommandArguments&) = delete;
    CommandArguments& operator=(const CommandArguments&) = delete;

    /// Whether this is the command that the user called.
    bool wasCalled() const { return command_->parsed(); }

    /// What the user asked for; an `Error` where the arguments contradict each other.
    virtual Command command() = 0;

protected:
    CommandArguments(CLI::App& app, const std::string& name, const std::string& description)
        : command_(app.add_subcommand(name, description)) {}

    CLI::App& arguments() { return *command_; }

private:
    CLI::App* command_;
};

/// Of a wrong call.
inline Error usageError(std::string sentence, std::vector<std::string> values = {}) {
    return {"quillmere.commandline", 2, std::move(sentence), std::move(values)};
}

/// "heic, jpg, png"
template <class Map>
std::string keysOf(const Map& map) {
    std::string list;
    for (const auto& [name, value] : map) list += (list.empty() ? "" : ", ") + name;
    return list;
}

}  // namespace quillmere::cli
