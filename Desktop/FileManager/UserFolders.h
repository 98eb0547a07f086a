#pragma once

#include <filesystem>
#include <optional>

namespace quillmere {

// The user's folders for this application by the XDG base directory rules: `quillmere` under the
// variable's folder, or under its default in the home. Nothing for a user without a home. They
// need not exist yet.

/// What the user would miss: `$XDG_DATA_HOME` or `~/.local/share`.
std::optional<std::filesystem::path> userDataFolder();
/// What the application remembers of its runs: `$XDG_STATE_HOME` or `~/.local/state`.
std::optional<std::filesystem::path> userStateFolder();
/// What can be had again: `$XDG_CACHE_HOME` or `~/.cache`.
std::optional<std::filesystem::path> userCacheFolder();

/// Makes a folder that only the user may enter, and those above it that are missing; takes from
/// others what they may do in one that exists. False where it can't be made or closed to others.
bool makePrivateFolder(const std::filesystem::path& folder);

}  // namespace quillmere
