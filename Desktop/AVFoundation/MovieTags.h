// What a movie file says of itself before its frames.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>

#include "Base/Geometry.h"

namespace quillmere {

struct MovieTags {
    /// Of the first video track, upright, in pixels.
    PixelSize size;
    /// The container's own texts by their names, such as "creation_time".
    std::map<std::string, std::string> texts;
};

/// Nothing for a file without a video track, a still picture among them, or one that can't be
/// read. Any thread.
std::optional<MovieTags> readMovieTags(const std::filesystem::path& file);

}  // namespace quillmere
