// Where a user's desktop keeps pictures and videos.
#pragma once

#include <filesystem>
#include <optional>

namespace quillmere {

/// By the rules of the XDG user directories. Both are absolute, and need not exist yet.
struct MediaFolders {
    std::filesystem::path pictures;
    std::filesystem::path videos;

    friend bool operator==(const MediaFolders&, const MediaFolders&) = default;
};

/// What `user-dirs.dirs` under `$XDG_CONFIG_HOME` or `~/.config` names; `~/Pictures` and `~/Videos`
/// where it names nothing that can be used, or the home itself, which stands for "none" there and
/// is too much for a library. Nothing for a user without a home.
std::optional<MediaFolders> userMediaFolders();

}  // namespace quillmere
