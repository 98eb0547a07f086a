#include "CommandLine/OutputPlan.h"

#include <unistd.h>

#include <algorithm>
#include <string>
#include <system_error>

namespace quillmere::cli {
namespace fs = std::filesystem;
namespace {

Error refusal(const std::string& sentence) { return {"quillmere.commandline", 1, sentence}; }

fs::path folderOf(const fs::path& file) {
    return file.has_parent_path() ? file.parent_path() : fs::path(".");
}

}  // namespace

OutputPlan::OutputPlan(const EnhanceOptions& options, PictureFormat otherwise)
    : options_(options), otherwise_(otherwise) {
    std::error_code ignored;
    intoFolder_ = options.output && fs::is_directory(*options.output, ignored);
}

Result<OutputFile> OutputPlan::outputFor(const fs::path& input) {
    OutputFile file;
    if (options_.library) {
        file.format = options_.format.value_or(otherwise_);
        return file;
    }
    if (options_.output && !intoFolder_) {
        file.path = *options_.output;
        file.format = options_.format.value_or(formatOfExtension(file.path).value_or(otherwise_));
    } else {
        file.format = options_.format.value_or(otherwise_);
        const std::string name = input.stem().string() + "_" +
                                 std::string(displayKey(options_.style)) + "." +
                                 std::string(formatName(file.format));
        file.path = (intoFolder_ ? *options_.output : input.parent_path()) / name;
    }
    if (const auto checked = check(file.path); !checked) return checked.error();
    taken_.insert(fs::weakly_canonical(file.path));
    return file;
}

Result<void> OutputPlan::check(const fs::path& output) const {
    std::error_code ignored;
    const fs::path folder = folderOf(output);
    if (!fs::is_directory(folder, ignored)) {
        return refusal("There is no folder " + folder.string() + ".");
    }
    if (taken_.contains(fs::weakly_canonical(output, ignored))) {
        return refusal("An earlier result of this run is already named " + output.string() + ".");
    }
    const bool isInput =
        std::any_of(options_.inputs.begin(), options_.inputs.end(),
                    [&](const fs::path& input) { return fs::equivalent(input, output, ignored); });
    if (isInput) {
        return refusal("The result would replace the input " + output.string() +
                       "; choose another name.");
    }
    if (fs::is_directory(output, ignored)) {
        return refusal(output.string() + " is a folder.");
    }
    if (!options_.force && fs::exists(fs::symlink_status(output, ignored))) {
        return refusal(output.string() + " already exists; --force replaces it.");
    }
    if (access(folder.c_str(), W_OK) != 0) {
        return refusal("The folder " + folder.string() + " refuses writing.");
    }
    return {};
}

}  // namespace quillmere::cli
