#include "Desktop/FileManager/UserFolders.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>

namespace quillmere {
namespace fs = std::filesystem;
namespace {

constexpr mode_t onlyTheUser = 0700;

std::optional<fs::path> userFolder(const char* variable, const fs::path& inHome) {
    // By the rules, a relative path counts as none.
    const char* named = std::getenv(variable);
    if (named && fs::path(named).is_absolute()) return fs::path(named) / "quillmere";
    const char* home = std::getenv("HOME");
    if (home && fs::path(home).is_absolute()) return fs::path(home) / inHome / "quillmere";
    return std::nullopt;
}

bool makeFolder(const fs::path& folder) {
    if (mkdir(folder.c_str(), onlyTheUser) == 0 || errno == EEXIST) return true;
    return errno == ENOENT && folder.has_relative_path() && makeFolder(folder.parent_path()) &&
           (mkdir(folder.c_str(), onlyTheUser) == 0 || errno == EEXIST);
}

}  // namespace

std::optional<fs::path> userDataFolder() { return userFolder("XDG_DATA_HOME", ".local/share"); }

std::optional<fs::path> userStateFolder() { return userFolder("XDG_STATE_HOME", ".local/state"); }

std::optional<fs::path> userCacheFolder() { return userFolder("XDG_CACHE_HOME", ".cache"); }

bool makePrivateFolder(const fs::path& folder) {
    struct stat status {};
    if (!makeFolder(folder) || stat(folder.c_str(), &status) != 0) return false;
    if (!S_ISDIR(status.st_mode)) return false;
    return (status.st_mode & 07777) == onlyTheUser || chmod(folder.c_str(), onlyTheUser) == 0;
}

}  // namespace quillmere
