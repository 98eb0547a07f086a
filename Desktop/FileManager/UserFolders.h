// Where the desktop keeps a user's files of the application's own.
#pragma once

#include <filesystem>
#include <optional>

namespace quillmere {

/// For what must outlive the process, by the XDG base directory rules: `quillmere` under
/// `$XDG_DATA_HOME` or `~/.local/share`. Nothing for a user without a home. It need not exist yet.
std::optional<std::filesystem::path> userDataFolder();

}  // namespace quillmere
