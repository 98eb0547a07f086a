#include "CommandLine/EnhanceArguments.h"

#include <optional>

namespace quillmere::cli {
namespace {

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

/// What CLI11 can't see: options that don't go together.
std::optional<Error> contradiction(const EnhanceOptions& options) {
    if (options.style == EnhanceStyle::rapidHQ) {
        return usageError("The style rapidHQ is for videos; choose another one for pictures.");
    }
    if (options.library && options.output) {
        return usageError(
            "With --library the photo library names the results; leave out either it or -o.");
    }
    std::error_code ignored;
    if (!options.output || std::filesystem::is_directory(*options.output, ignored)) return {};
    const std::string name = options.output->string();
    if (options.inputs.size() > 1 || !options.output->has_filename()) {
        return usageError("There is no folder %@; make it first, or name a file for one input.",
                          {name});
    }
    const auto asked = formatOfExtension(*options.output);
    if (!asked && options.output->has_extension() && !options.format) {
        return usageError(
            "Quillmere can't write %@ files; end the name in .jpg, .heic or .png, or add --format.",
            {options.output->extension().string()});
    }
    if (asked && options.format && asked != options.format) {
        return usageError(
            "The name %@ and --format %@ ask for different formats.",
            {options.output->filename().string(), std::string(formatName(*options.format))});
    }
    return {};
}

}  // namespace

EnhanceArguments::EnhanceArguments(CLI::App& app)
    : CommandArguments(app, "enhance", "Enlarge one or several pictures"),
      styles_(stylesByName()),
      formats_(formatsByName()) {
    CLI::App& arguments = this->arguments();
    arguments
        .add_option("INPUT", options_.inputs,
                    "Pictures: JPEG, PNG, WebP, HEIC, AVIF, TIFF, JPEG XL, GIF or BMP")
        ->required();
    arguments.add_option("-o,--output", options_.output,
                         "The result's file, or a folder for results "
                         "(default: beside the input, as NAME_STYLE.EXT)");
    arguments.add_option("--style", style_, "One of: " + keysOf(styles_))
        ->capture_default_str()
        ->check(CLI::IsMember(&styles_))
        ->option_text("NAME");
    arguments
        .add_option("--format", format_,
                    "One of: " + keysOf(formats_) +
                        " (default: by the name after -o, else the setting imageFormatKey)")
        ->check(CLI::IsMember(&formats_))
        ->option_text("NAME");
    arguments
        .add_option("--limit", options_.limit,
                    "The longest side of the picture that is enlarged, in pixels: 1024 or 2048; "
                    "a larger picture is reduced to it first "
                    "(default: the setting resolutionLimitIndexKey)")
        ->check(CLI::IsMember({1024, 2048}))
        ->option_text("PIXELS");
    keepDateOption_ =
        arguments.add_flag("--keep-date,!--no-keep-date", keepDate_,
                           "Whether results carry the date on which their source was taken "
                           "(default: the setting preserveCreationDateKey)");
    keepLocationOption_ = arguments.add_flag("--keep-location,!--no-keep-location", keepLocation_,
                                             "Whether they carry the place "
                                             "(default: the setting preserveLocationKey)");
    arguments.add_flag("--library", options_.library,
                       "Save results in the photo library, under names of its making");
    arguments.add_flag("--force", options_.force, "Replace existing files");
    arguments.add_flag("--json", options_.json,
                       "One JSON object for each input on standard output");
    arguments.add_flag("--quiet", options_.quiet, "Say nothing but errors");
}

Command EnhanceArguments::command() {
    options_.style = styles_.at(style_);
    if (!keepDateOption_->empty()) options_.keepDate = keepDate_;
    if (!keepLocationOption_->empty()) options_.keepLocation = keepLocation_;
    if (!format_.empty()) options_.format = formats_.at(format_);
    if (const auto wrong = contradiction(options_)) return *wrong;
    return options_;
}

}  // namespace quillmere::cli
