#include "CommandLine/Options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>

#include "CommandLine/CommandArguments.h"
#include "CommandLine/EnhanceArguments.h"
#include "CommandLine/LibraryArguments.h"
#include "CommandLine/SettingsArguments.h"
#include "CommandLine/VideoArguments.h"

#ifndef QUILLMERE_VERSION
#error "QUILLMERE_VERSION comes from the build"
#endif

namespace quillmere::cli {
namespace {

/// A command that can be told nothing but how to print.
template <class Options>
class ListArguments final : public CommandArguments {
public:
    ListArguments(CLI::App& app, const std::string& name, const std::string& description)
        : CommandArguments(app, name, description) {
        arguments().add_flag("--json", options_.json, "One JSON object a line");
    }

    Command command() override { return options_; }

private:
    Options options_;
};

}  // namespace

Command parseArguments(int argc, const char* const* argv) {
    CLI::App app("Enlarge pictures with neural super-resolution, on this machine", "quillmere-cli");
    app.set_version_flag("--version", "quillmere-cli " QUILLMERE_VERSION);
    app.require_subcommand(1);

    EnhanceArguments enhance(app);
    VideoArguments video(app);
    LibraryArguments library(app);
    SettingsArguments settings(app);
    ListArguments<StylesOptions> styles(app, "styles", "List the styles");
    ListArguments<DiagnosticsOptions> diagnostics(
        app, "diagnostics",
        "Show what the last runs did before their end, and where events are recorded");

    // CLI11 would only say that a command is missing.
    const auto named = [&](const CLI::App* command) { return command->check_name(argv[1]); };
    if (argc > 1 && argv[1][0] != '-' && app.get_subcommands(named).empty()) {
        return usageError("There is no command %@.", {argv[1]});
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForVersion& version) {
        return Message{std::string(version.what()) + "\n"};
    } catch (const CLI::CallForAllHelp&) {
        return Message{app.help("", CLI::AppFormatMode::All)};
    } catch (const CLI::CallForHelp&) {
        return Message{app.help()};
    } catch (const CLI::ParseError& error) {
        return usageError(error.what());
    }
    const std::array<CommandArguments*, 6> commands{&enhance,  &video,  &library,
                                                    &settings, &styles, &diagnostics};
    const auto called =
        std::find_if(commands.begin(), commands.end(),
                     [](const CommandArguments* arguments) { return arguments->wasCalled(); });
    return (*called)->command();
}

}  // namespace quillmere::cli
