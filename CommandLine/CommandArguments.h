// One command's share of the command line's arguments.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

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

    /// What the user asked for; a `Message` where the arguments contradict each other.
    virtual Command command() = 0;

protected:
    CommandArguments(CLI::App& app, const std::string& name, const std::string& description)
        : command_(app.add_subcommand(name, description)) {}

    CLI::App& arguments() { return *command_; }

private:
    CLI::App* command_;
};

/// For a wrong call: the sentence, and where to read on.
inline Message usageMessage(const std::string& sentence) {
    return {"quillmere-cli: " + sentence + "\nquillmere-cli --help says how to call it.\n", 2};
}

/// "heic, jpg, png"
template <class Map>
std::string keysOf(const Map& map) {
    std::string list;
    for (const auto& [name, value] : map) list += (list.empty() ? "" : ", ") + name;
    return list;
}

}  // namespace quillmere::cli
