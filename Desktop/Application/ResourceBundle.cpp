#include "Desktop/Application/ResourceBundle.h"

#include <string>
#include <system_error>

namespace quillmere {
namespace fs = std::filesystem;

Result<ResourceBundle> ResourceBundle::besideTheProgram() {
    std::error_code failed;
    const fs::path program = fs::read_symlink("/proc/self/exe", failed);
    const fs::path folder = program.parent_path().parent_path() / "share" / "quillmere";
    if (failed || !fs::is_directory(folder, failed)) {
        return Error{"quillmere.bundle",
                     1,
                     "The program's own resources are missing at %@. Install Quillmere again.",
                     {folder.string()}};
    }
    return ResourceBundle(folder);
}

std::optional<fs::path> ResourceBundle::urlForResource(std::string_view name,
                                                       std::string_view extension) const {
    const std::string file = std::string(name) + "." + std::string(extension);
    if (extension == "mlmodelc") return folder_ / "Models" / file;
    std::error_code failed;
    for (const char* kind : {"", "Strings", "Samples"}) {
        if (fs::path path = folder_ / kind / file; fs::exists(path, failed)) return path;
    }
    return std::nullopt;
}

}  // namespace quillmere
