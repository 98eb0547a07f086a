// Where the desktop keeps a user's files of the application's own.
#pragma once

#include <filesystem>
#include <optional>

namespace quillmere {

/// For what can be had again, by the XDG base directory specification: `quillmere` under
/// `$XDG_CACHE_HOME` or `~/.cache`. Nothing for a user without a home. It need not exist yet.
std::optional<std::filesystem::path> userCacheFolder();

}  // namespace quillmere
