// Whole files in and out, and the folders that they lie in.
#pragma once

#include <cstddef>
#include <filesystem>
#include <span>
#include <vector>

#include "Base/Result.h"

namespace quillmere {

enum class WriteExisting { refuse, replace };

/// May be called from any thread. Errors have the domain `posixErrorDomain` and the system's
/// error number as their code.
class FileManager {
public:
    static constexpr const char* posixErrorDomain = "NSPOSIXErrorDomain";

    virtual ~FileManager() = default;

    virtual Result<std::vector<std::byte>> contentsOfFile(const std::filesystem::path& path) = 0;

    /// Writes a file whole or not at all: its bytes are flushed to the disk before the name
    /// appears. With `refuse`, an existing file stays untouched (EEXIST), even one that appears
    /// while the bytes are written. A failure, or the end of the process at any point, leaves no
    /// part of the file under any name.
    virtual Result<void> writeFile(const std::filesystem::path& path,
                                   std::span<const std::byte> contents, WriteExisting existing) = 0;

    /// Copies a file, in the place of what has the name; a copy that fails leaves nothing.
    virtual Result<void> copyItem(const std::filesystem::path& source,
                                  const std::filesystem::path& target) = 0;

    /// Makes a folder, and those above it that are missing. An existing folder is a success.
    virtual Result<void> createDirectory(const std::filesystem::path& path) = 0;

    /// The names of what lies in a folder, in no order.
    virtual Result<std::vector<std::filesystem::path>> contentsOfDirectory(
        const std::filesystem::path& path) = 0;

    /// Removes a file, or a folder with all that it holds; a symbolic link is not followed.
    /// Nothing of that name is an error (ENOENT).
    virtual Result<void> removeItem(const std::filesystem::path& path) = 0;

    /// A folder for this process alone, empty at its start and gone soon after its end. It exists
    /// unless it can't be made; then nothing can be written into it.
    virtual std::filesystem::path temporaryDirectory() = 0;
};

}  // namespace quillmere
