#include "Desktop/FileManager/UserFolders.h"

#include <cstdlib>

namespace quillmere {
namespace fs = std::filesystem;

std::optional<fs::path> userCacheFolder() {
    // A relative path has no meaning here, says the specification.
    const char* cache = std::getenv("XDG_CACHE_HOME");
    if (cache && fs::path(cache).is_absolute()) return fs::path(cache) / "quillmere";
    const char* home = std::getenv("HOME");
    if (home && fs::path(home).is_absolute()) return fs::path(home) / ".cache" / "quillmere";
    return std::nullopt;
}

}  // namespace quillmere
