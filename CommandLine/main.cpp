// The command line: a second front end over the application's logic.
#include <cstdio>
#include <string>

#include "CommandLine/DiagnosticsCommand.h"
#include "CommandLine/EnhanceCommand.h"
#include "CommandLine/Interruption.h"
#include "CommandLine/LibraryCommand.h"
#include "CommandLine/Options.h"
#include "CommandLine/SettingsCommand.h"
#include "CommandLine/StylesCommand.h"
#include "CommandLine/VideoCommand.h"
#include "Desktop/DesktopPlatform.h"
#include "Desktop/FileManager/UserFolders.h"
#include "Desktop/Localization/UserLanguage.h"

namespace {

using namespace quillmere;

int fail(const Error& error) {
    std::fprintf(stderr, "quillmere-cli: %s\n", DesktopPlatform::reasonOf(error).c_str());
    return 1;
}

int failUsage(const Error& error) {
    fail(error);
    const Error hint{error.domain, error.code, "quillmere-cli --help says how to call it."};
    std::fprintf(stderr, "%s\n", DesktopPlatform::reasonOf(hint).c_str());
    return 2;
}

int run(const cli::Command& command, DesktopPlatform& platform, cli::Interruption& interruption) {
    if (const auto* styles = std::get_if<cli::StylesOptions>(&command)) {
        return cli::listStyles(*styles, platform.localization());
    }
    if (const auto* settings = std::get_if<cli::SettingsOptions>(&command)) {
        return cli::runSettings(*settings, platform.userDefaults());
    }
    if (const auto* library = std::get_if<cli::LibraryOptions>(&command)) {
        return cli::runLibrary(*library, platform);
    }
    if (const auto* video = std::get_if<cli::VideoOptions>(&command)) {
        return cli::VideoCommand(platform, interruption, *video).run();
    }
    return cli::EnhanceCommand(platform, interruption, std::get<cli::EnhanceOptions>(command))
        .run();
}

}  // namespace

int main(int argc, char** argv) {
    const cli::Command command = cli::parseArguments(argc, argv);
    if (const auto* message = std::get_if<cli::Message>(&command)) {
        std::fputs(message->text.c_str(), stdout);
        return 0;
    }
    if (const auto* wrong = std::get_if<Error>(&command)) return failUsage(*wrong);

    // Looks at other runs, and is none itself.
    if (const auto* diagnostics = std::get_if<cli::DiagnosticsOptions>(&command)) {
        const auto shown = cli::showDiagnostics(*diagnostics, userStateFolder());
        return shown ? 0 : fail(shown.error());
    }

    cli::Interruption interruption;
    const auto platform = DesktopPlatform::make(userLanguage());
    if (!platform) return fail(platform.error());
    interruption.beforeEnd([&] { (*platform)->recordOrderlyEnd(); });
    const int exitCode = run(command, **platform, interruption);
    interruption.beforeEnd(nullptr);
    return exitCode;
}
