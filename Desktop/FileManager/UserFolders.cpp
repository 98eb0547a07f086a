#include "Desktop/FileManager/UserFolders.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>

namespace quillmere {
namespace fs = std::filesystem;
namespace {

constexpr mode_t onlyTheUser = 0700;

bool makeFolder(const fs::path& folder) {
    if (mkdir(folder.c_str(), onlyTheUser) == 0 || errno == EEXIST) return true;
    return errno == ENOENT && folder.has_relative_path() && makeFolder(folder.parent_path()) &&
           (mkdir(folder.c_str(), onlyTheUser) == 0 || errno == EEXIST);
}

}  // namespace

std::optional<fs::path> userStateFolder() {
    // By the XDG base directory rules, a relative path counts as none.
    const char* state = std::getenv("XDG_STATE_HOME");
    if (state && fs::path(state).is_absolute()) return fs::path(state) / "quillmere";
    const char* home = std::getenv("HOME");
    if (home && fs::path(home).is_absolute()) {
        return fs::path(home) / ".local" / "state" / "quillmere";
    }
    return std::nullopt;
}

bool makePrivateFolder(const fs::path& folder) {
    struct stat status {};
    if (!makeFolder(folder) || stat(folder.c_str(), &status) != 0) return false;
    if (!S_ISDIR(status.st_mode)) return false;
    return (status.st_mode & 07777) == onlyTheUser || chmod(folder.c_str(), onlyTheUser) == 0;
}

}  // namespace quillmere
