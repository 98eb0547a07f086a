// Who reads a file's own tags, for those who need not know how.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>

#include "Desktop/Photos/FileRecord.h"

namespace quillmere {

/// As `readFileRecord`.
using FileRecordReader =
    std::function<std::optional<FileRecord>(const std::filesystem::path& file)>;

}  // namespace quillmere
