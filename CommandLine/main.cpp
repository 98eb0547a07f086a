// The command line: a second front end over the application's logic.
#include <cstdio>
#include <string>

#include "CommandLine/EnhanceCommand.h"
#include "CommandLine/Interruption.h"
#include "CommandLine/Options.h"
#include "CommandLine/SettingsCommand.h"
#include "CommandLine/StylesCommand.h"
#include "Desktop/DesktopPlatform.h"

namespace {

using namespace quillmere;

int fail(const std::string& sentence) {
    std::fprintf(stderr, "quillmere-cli: %s\n", sentence.c_str());
    return 1;
}

}  // namespace

int main(int argc, char** argv) {
    const cli::Command command = cli::parseArguments(argc, argv);
    if (const auto* message = std::get_if<cli::Message>(&command)) {
        std::fputs(message->text.c_str(), message->exitCode == 0 ? stdout : stderr);
        return message->exitCode;
    }

    cli::Interruption interruption;
    const auto platform = DesktopPlatform::make();
    if (!platform) return fail(platform.error().localizedDescription);
    if (const auto* styles = std::get_if<cli::StylesOptions>(&command)) {
        return cli::listStyles(*styles, (*platform)->localization());
    }
    if (const auto* settings = std::get_if<cli::SettingsOptions>(&command)) {
        return cli::runSettings(*settings, (*platform)->userDefaults());
    }
    return cli::EnhanceCommand(**platform, interruption, std::get<cli::EnhanceOptions>(command))
        .run();
}
