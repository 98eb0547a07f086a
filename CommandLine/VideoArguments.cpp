#include "CommandLine/VideoArguments.h"

#include <strings.h>

namespace quillmere::cli {
namespace {

std::map<std::string, EnhanceStyle> stylesByName() {
    std::map<std::string, EnhanceStyle> names;
    for (const EnhanceStyle style : allEnhanceStyles) {
        names.emplace(std::string(displayKey(style)), style);
    }
    return names;
}

}  // namespace

VideoArguments::VideoArguments(CLI::App& app)
    : CommandArguments(app, "video", "Enlarge a video"), styles_(stylesByName()) {
    CLI::App& arguments = this->arguments();
    arguments.add_option("INPUT", options_.input, "A video: MP4, MOV, MKV, WebM, AVI and others")
        ->required();
    arguments.add_option("-o,--output", options_.output,
                         "The result's file, whose name ends in .mov, or a folder for it "
                         "(default: beside the input, as NAME_STYLE.mov)");
    arguments
        .add_option("--style", style_,
                    "One of: " + keysOf(styles_) +
                        "; rapidHQ is by far the quickest that enlarges, original keeps the size")
        ->capture_default_str()
        ->check(CLI::IsMember(&styles_))
        ->option_text("NAME");
    arguments
        .add_option("--limit", options_.limit,
                    "The longest side of frames that are enlarged, in pixels: 1024 or 2048; "
                    "larger ones are reduced to it first; not for rapidHQ "
                    "(default: the setting resolutionLimitIndexKey)")
        ->check(CLI::IsMember({1024, 2048}))
        ->option_text("PIXELS");
    arguments
        .add_option("--quality", options_.quality,
                    "How much of the picture is kept, 1 to 100, at whatever size of the file that "
                    "takes: 66 loses next to nothing (default: as large a file as the input's)")
        ->check(CLI::Range(1, 100))
        ->option_text("NUMBER");
    arguments.add_flag("--force", options_.force, "Replace an existing file");
    arguments.add_flag("--json", options_.json, "One JSON object on standard output");
    arguments.add_flag("--quiet", options_.quiet, "Say nothing but errors");
}

Command VideoArguments::command() {
    options_.style = styles_.at(style_);
    std::error_code ignored;
    if (!options_.output || std::filesystem::is_directory(*options_.output, ignored)) {
        return options_;
    }
    if (!options_.output->has_filename()) {
        return usageError("There is no folder %@; make it first, or name a file.",
                          {options_.output->string()});
    }
    if (strcasecmp(options_.output->extension().c_str(), ".mov") != 0) {
        return usageError("Videos become QuickTime movies; end the name %@ in .mov.",
                          {options_.output->filename().string()});
    }
    return options_;
}

}  // namespace quillmere::cli
