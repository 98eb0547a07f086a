// Where the desktop keeps a user's files of the application's own.
#pragma once

#include <filesystem>
#include <optional>

namespace quillmere {

/// For what the application remembers of its runs, by the XDG base directory rules: `quillmere`
/// under `$XDG_STATE_HOME` or `~/.local/state`. Nothing for a user without a home. It need not
/// exist yet.
std::optional<std::filesystem::path> userStateFolder();

/// Makes a folder that only the user may enter, and those above it that are missing; takes from
/// others what they may do in one that exists. False where it can't be made or closed to others.
bool makePrivateFolder(const std::filesystem::path& folder);

}  // namespace quillmere
