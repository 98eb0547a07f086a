#include "CommandLine/OutputCheck.h"

#include <unistd.h>

#include <algorithm>
#include <system_error>
#include <utility>

namespace quillmere::cli {
namespace fs = std::filesystem;

Error outputRefusal(std::string sentence, std::vector<std::string> values) {
    return {"quillmere.commandline", 1, std::move(sentence), std::move(values)};
}

Result<void> checkOutput(const fs::path& output, const std::vector<fs::path>& inputs,
                         bool mayReplace) {
    std::error_code ignored;
    const fs::path folder = output.has_parent_path() ? output.parent_path() : fs::path(".");
    if (!fs::is_directory(folder, ignored)) {
        return outputRefusal("There is no folder %@.", {folder.string()});
    }
    const bool isInput = std::any_of(inputs.begin(), inputs.end(), [&](const fs::path& input) {
        return fs::equivalent(input, output, ignored);
    });
    if (isInput) {
        return outputRefusal("The result would replace the input %@; choose another name.",
                             {output.string()});
    }
    if (fs::is_directory(output, ignored)) {
        return outputRefusal("%@ is a folder.", {output.string()});
    }
    if (!mayReplace && fs::exists(fs::symlink_status(output, ignored))) {
        return outputRefusal("%@ already exists; --force replaces it.", {output.string()});
    }
    if (access(folder.c_str(), W_OK) != 0) {
        return outputRefusal("The folder %@ refuses writing.", {folder.string()});
    }
    return {};
}

}  // namespace quillmere::cli
