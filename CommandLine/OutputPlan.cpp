#include "CommandLine/OutputPlan.h"

#include <string>
#include <system_error>

#include "CommandLine/OutputCheck.h"

namespace quillmere::cli {
namespace fs = std::filesystem;

OutputPlan::OutputPlan(const EnhanceOptions& options, PictureFormat otherwise)
    : options_(options), otherwise_(otherwise) {
    std::error_code ignored;
    intoFolder_ = options.output && fs::is_directory(*options.output, ignored);
}

Result<OutputFile> OutputPlan::outputFor(const fs::path& input) {
    std::error_code ignored;
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
    if (taken_.contains(fs::weakly_canonical(file.path, ignored))) {
        return outputRefusal("An earlier result of this run is already named %@.",
                             {file.path.string()});
    }
    if (const auto checked = checkOutput(file.path, options_.inputs, options_.force); !checked) {
        return checked.error();
    }
    taken_.insert(fs::weakly_canonical(file.path));
    return file;
}

}  // namespace quillmere::cli
