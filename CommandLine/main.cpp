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

namespace {

using namespace quillmere;

int fail(const std::string& sentence) {
    std::fprintf(stderr, "quillmere-cli: %s\n", sentence.c_str());
    return 1;
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
        std::fputs(message->text.c_str(), message->exitCode == 0 ? stdout : stderr);
        return message->exitCode;
    }

    // Looks at other runs, and is none itself.
    if (const auto* diagnostics = std::get_if<cli::DiagnosticsOptions>(&command)) {
        return cli::showDiagnostics(*diagnostics, userStateFolder());
    }

    cli::Interruption interruption;
    const auto platform = DesktopPlatform::make();
    if (!platform) return fail(platform.error().localizedDescription);
    interruption.beforeEnd([&] { (*platform)->recordOrderlyEnd(); });
    const int exitCode = run(command, **platform, interruption);
    interruption.beforeEnd(nullptr);
    return exitCode;
}
