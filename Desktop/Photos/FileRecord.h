// What a picture's or a movie's own file says of it.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "Base/Date.h"
#include "Base/Geometry.h"
#include "Platform/Photos/Location.h"
#include "Platform/Photos/PHAsset.h"

namespace quillmere {

struct FileRecord {
    PHAssetMediaType mediaType = PHAssetMediaType::image;
    /// The format, such as "public.jpeg".
    std::string typeIdentifier;
    /// Upright; 0 by 0 where the file doesn't say.
    PixelSize pixelSize{0, 0};
    /// As in Exif, 1 to 8; 1 for a movie, whose own rotation is applied when it is shown.
    int orientation = 1;
    /// From the tags alone. A time without a zone is one of the user's zone now.
    std::optional<Date> creationDate;
    std::optional<Location> location;
};

/// Looks at the file's tags, not at its picture; a few milliseconds. Nothing for what is neither a
/// picture nor a movie of a known kind, or can't be read. A damaged tag counts as none. Never
/// throws; any thread.
std::optional<FileRecord> readFileRecord(const std::filesystem::path& file);

/// By the file's name alone: whether `readFileRecord` may know it.
bool mayBePictureOrMovie(const std::filesystem::path& file);

}  // namespace quillmere
