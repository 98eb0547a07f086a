// Tells whether a file is still the one that was looked at, and whether two names mean it.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <optional>

#include "Base/Date.h"

namespace quillmere {

struct FileStamp {
    std::int64_t size = 0;      // bytes
    std::int64_t modified = 0;  // nanoseconds since 1970
    std::int64_t inode = 0;

    Date modificationDate() const {
        return Date(std::chrono::duration_cast<Date::duration>(std::chrono::nanoseconds(modified)));
    }

    friend bool operator==(const FileStamp&, const FileStamp&) = default;
};

inline FileStamp stampOf(const struct stat& status) {
    constexpr std::int64_t nanosecondsInSecond = 1'000'000'000;
    return {status.st_size, status.st_mtim.tv_sec * nanosecondsInSecond + status.st_mtim.tv_nsec,
            static_cast<std::int64_t>(status.st_ino)};
}

/// Of a regular file that is no symbolic link; nothing for others.
inline std::optional<FileStamp> stampOf(const std::filesystem::path& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
    return stampOf(status);
}

}  // namespace quillmere
