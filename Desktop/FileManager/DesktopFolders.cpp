// The desktop file manager's operations on whole files and folders.
#include <cerrno>
#include <string>
#include <system_error>

#include "Desktop/FileManager/DesktopFileManager.h"

namespace quillmere {
namespace fs = std::filesystem;
namespace {

Error failure(int number, const fs::path& path, const char* sentence) {
    return {FileManager::posixErrorDomain,
            number,
            sentence,
            {path.string(), std::generic_category().message(number)}};
}

}  // namespace

Result<void> DesktopFileManager::createDirectory(const fs::path& path) {
    std::error_code failed;
    fs::create_directories(path, failed);
    if (!failed) return {};
    return failure(failed.value(), path, "%@ can't be made: %@.");
}

Result<std::vector<fs::path>> DesktopFileManager::contentsOfDirectory(const fs::path& path) {
    std::error_code failed;
    std::vector<fs::path> names;
    for (fs::directory_iterator entry(path, failed), end; !failed && entry != end;
         entry.increment(failed)) {
        names.push_back(entry->path().filename());
    }
    if (failed) return failure(failed.value(), path, "%@ can't be listed: %@.");
    return names;
}

Result<void> DesktopFileManager::copyItem(const fs::path& source, const fs::path& target) {
    std::error_code failed, ignored;
    fs::copy_file(source, target, fs::copy_options::overwrite_existing, failed);
    if (!failed) return {};
    fs::remove(target, ignored);
    return failure(failed.value(), source, "%@ can't be copied: %@.");
}

Result<void> DesktopFileManager::removeItem(const fs::path& path) {
    std::error_code failed;
    const auto removed = fs::remove_all(path, failed);
    if (failed) return failure(failed.value(), path, "%@ can't be removed: %@.");
    if (removed == 0) return failure(ENOENT, path, "%@ can't be removed: %@.");
    return {};
}

}  // namespace quillmere
