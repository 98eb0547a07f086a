#include "Desktop/FileManager/UserFolders.h"

#include <cstdlib>

namespace quillmere {
namespace fs = std::filesystem;

std::optional<fs::path> userDataFolder() {
    // By the XDG base directory rules, a relative path counts as none.
    const char* data = std::getenv("XDG_DATA_HOME");
    if (data && fs::path(data).is_absolute()) return fs::path(data) / "quillmere";
    const char* home = std::getenv("HOME");
    if (home && fs::path(home).is_absolute()) {
        return fs::path(home) / ".local" / "share" / "quillmere";
    }
    return std::nullopt;
}

}  // namespace quillmere
