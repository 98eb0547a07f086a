#include "CommandLine/Options.h"

#include <CLI/CLI.hpp>
#include <map>

#ifndef QUILLMERE_VERSION
#error "QUILLMERE_VERSION comes from the build"
#endif

namespace quillmere::cli {
namespace {

Message usage(const std::string& sentence) {
    return {"quillmere-cli: " + sentence + "\nquillmere-cli --help says how to call it.\n", 2};
}

std::map<std::string, EnhanceStyle> stylesByName() {
    std::map<std::string, EnhanceStyle> names;
    for (const EnhanceStyle style : allEnhanceStyles) {
        names.emplace(std::string(displayKey(style)), style);
    }
    return names;
}

std::map<std::string, PictureFormat> formatsByName() {
    std::map<std::string, PictureFormat> names;
    for (const PictureFormat format : UserDefaultsHelper::allImageFormats) {
        names.emplace(std::string(formatName(format)), format);
    }
    return names;
}

template <class Value>
std::string namesOf(const std::map<std::string, Value>& byName) {
    std::string list;
    for (const auto& [name, value] : byName) list += (list.empty() ? "" : ", ") + name;
    return list;
}

std::map<std::string, Setting> settingsByKey() {
    std::map<std::string, Setting> keys;
    for (const Setting& setting : allSettings()) keys.emplace(std::string(setting.key), setting);
    return keys;
}

/// What CLI11 can't see: options that don't go together.
std::optional<std::string> contradiction(const EnhanceOptions& options) {
    if (options.style == EnhanceStyle::rapidHQ) {
        return "The style rapidHQ is for videos; choose another one for pictures.";
    }
    std::error_code ignored;
    if (!options.output || std::filesystem::is_directory(*options.output, ignored)) return {};
    const std::string name = options.output->string();
    if (options.inputs.size() > 1 || !options.output->has_filename()) {
        return "There is no folder " + name + "; make it first, or name a file for one input.";
    }
    const auto asked = formatOfExtension(*options.output);
    if (!asked && options.output->has_extension() && !options.format) {
        return "Quillmere can't write " + options.output->extension().string() +
               " files; end the name in .jpg, .heic or .png, or add --format.";
    }
    if (asked && options.format && asked != options.format) {
        return "The name " + options.output->filename().string() + " and --format " +
               std::string(formatName(*options.format)) + " ask for different formats.";
    }
    return {};
}

}  // namespace

Command parseArguments(int argc, const char* const* argv) {
    CLI::App app("Enlarge pictures with neural super-resolution, on this machine.",
                 "quillmere-cli");
    app.set_version_flag("--version", "quillmere-cli " QUILLMERE_VERSION);
    app.require_subcommand(1);

    EnhanceOptions enhance;
    const auto styles = stylesByName();
    const auto formats = formatsByName();
    std::string styleName = "high";
    std::string formatChoice;
    CLI::App* enhanceCommand = app.add_subcommand("enhance", "Enlarge one or several pictures");
    enhanceCommand
        ->add_option("INPUT", enhance.inputs,
                     "Pictures: JPEG, PNG, WebP, HEIC, AVIF, "
                     "TIFF, JPEG XL, GIF or BMP")
        ->required();
    enhanceCommand->add_option("-o,--output", enhance.output,
                               "The result's file, or a folder for results "
                               "(default: beside the input, as NAME_STYLE.EXT)");
    enhanceCommand->add_option("--style", styleName, "One of: " + namesOf(styles))
        ->capture_default_str()
        ->check(CLI::IsMember(&styles))
        ->option_text("NAME");
    enhanceCommand
        ->add_option("--format", formatChoice,
                     "One of: " + namesOf(formats) +
                         " (default: by the name after -o, else the setting imageFormatKey)")
        ->check(CLI::IsMember(&formats))
        ->option_text("NAME");
    enhanceCommand
        ->add_option("--limit", enhance.limit,
                     "The longest side of the picture that is enlarged, in pixels: 1024 or 2048; "
                     "a larger picture is reduced to it first "
                     "(default: the setting resolutionLimitIndexKey)")
        ->check(CLI::IsMember({1024, 2048}))
        ->option_text("PIXELS");
    enhanceCommand->add_flag("--force", enhance.force, "Replace existing files");
    enhanceCommand->add_flag("--json", enhance.json,
                             "One JSON object for each input on standard output");
    enhanceCommand->add_flag("--quiet", enhance.quiet, "Say nothing but errors");

    StylesOptions stylesOptions;
    CLI::App* stylesCommand = app.add_subcommand("styles", "List the styles");
    stylesCommand->add_flag("--json", stylesOptions.json, "One JSON object a line");

    DiagnosticsOptions diagnosticsOptions;
    CLI::App* diagnosticsCommand = app.add_subcommand(
        "diagnostics",
        "Show what the last runs did before their end, and where events are recorded");
    diagnosticsCommand->add_flag("--json", diagnosticsOptions.json, "One JSON object a line");
    const auto settings = settingsByKey();
    SettingsOptions settingsOptions;
    std::string settingKey;
    std::string settingText;
    CLI::App* settingsCommand = app.add_subcommand(
        "settings", "List what is stored, read one setting of it, or change one");
    auto* keyOption = settingsCommand->add_option("KEY", settingKey, "One of: " + namesOf(settings))
                          ->option_text(" ");
    auto* valueOption = settingsCommand
                            ->add_option("VALUE", settingText,
                                         "What to store: jpg, heic or png for a format, 1024 or "
                                         "2048 for the limit, true or false, or a number")
                            ->option_text(" ");
    settingsCommand->add_flag("--json", settingsOptions.json, "One JSON object a line");

    // CLI11 would only say that a command is missing.
    const auto named = [&](const CLI::App* command) { return command->check_name(argv[1]); };
    if (argc > 1 && argv[1][0] != '-' && app.get_subcommands(named).empty()) {
        return usage("There is no command " + std::string(argv[1]) + ".");
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForVersion& version) {
        return Message{std::string(version.what()) + "\n", 0};
    } catch (const CLI::CallForAllHelp&) {
        return Message{app.help("", CLI::AppFormatMode::All), 0};
    } catch (const CLI::CallForHelp&) {
        return Message{app.help(), 0};
    } catch (const CLI::ParseError& error) {
        return usage(error.what());
    }
    if (stylesCommand->parsed()) return stylesOptions;
    if (diagnosticsCommand->parsed()) return diagnosticsOptions;
    if (settingsCommand->parsed()) {
        if (!keyOption->empty()) {
            const auto found = settings.find(settingKey);
            if (found == settings.end()) {
                return usage("There is no setting " + settingKey +
                             "; there are: " + namesOf(settings) + ".");
            }
            settingsOptions.setting = found->second;
        }
        if (!valueOption->empty()) {
            const SettingKind kind = settingsOptions.setting->kind;
            settingsOptions.value = settingValue(kind, settingText);
            if (!settingsOptions.value) {
                return usage(settingKey + " can't be \"" + settingText + "\"; it is " +
                             std::string(valuesOf(kind)) + ".");
            }
        }
        return settingsOptions;
    }

    enhance.style = styles.at(styleName);
    if (!formatChoice.empty()) enhance.format = formats.at(formatChoice);
    if (const auto wrong = contradiction(enhance)) return usage(*wrong);
    return enhance;
}

}  // namespace quillmere::cli
