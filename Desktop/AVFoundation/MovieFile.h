// The file that a movie is written to, seen from FFmpeg.
#pragma once

#include <filesystem>

#include "Base/Result.h"
#include "Desktop/AVFoundation/FFmpegHandles.h"
#include "Desktop/FileManager/PendingFile.h"

namespace quillmere {

/// Has no name until `commit`; goes without a trace before. One thread at a time.
class MovieFile {
public:
    explicit MovieFile(const std::filesystem::path& path)
        : file_(std::filesystem::absolute(path)) {}
    MovieFile(const MovieFile&) = delete;
    MovieFile& operator=(const MovieFile&) = delete;

    Result<void> open();
    /// Where FFmpeg writes; after `open`.
    AVIOContext* io() { return io_.get(); }
    /// 0, or an error of FFmpeg's numbers.
    int flush();
    /// Gives the file its name. An existing file of that name stays, and this fails.
    int commit();

private:
    static int write(void* opaque, std::uint8_t* bytes, int size);
    static std::int64_t seek(void* opaque, std::int64_t offset, int whence);

    PendingFile file_;
    AVIOContextRef io_;
};

}  // namespace quillmere
