// Files of the user on the desktop: read whole, written whole or not at all.
#pragma once

#include "Desktop/FileManager/TemporaryDirectory.h"
#include "Platform/FileManager/FileManager.h"

namespace quillmere {

/// A file is written to an inode without a name, flushed, and only then given its name, so that
/// the end of the process at any point leaves nothing of it. Replacing gives it a hidden name for
/// the moment between two system calls, ".NAME.XXXXXX.part", which then takes the old one's place.
///
/// Where a file system has no inodes without names, the bytes are written under that hidden name:
/// then the end of the process while they are written leaves that one file behind, and the next
/// write of NAME in the same folder removes it, unless another process is still writing it.
class DesktopFileManager final : public FileManager {
public:
    /// The largest file that is read; a larger one is an error.
    static constexpr std::size_t maximumSize = std::size_t{2} << 30;

    /// Reads regular files, and what can be read to an end, such as pipes.
    Result<std::vector<std::byte>> contentsOfFile(const std::filesystem::path& path) override;

    /// A symbolic link is followed and what it points to is written. A replaced file hands its
    /// mode on; a new one gets 0666 less the process's mask. Folders, pipes and devices are
    /// refused as targets.
    Result<void> writeFile(const std::filesystem::path& path, std::span<const std::byte> contents,
                           WriteExisting existing) override;

    Result<void> copyItem(const std::filesystem::path& source,
                          const std::filesystem::path& target) override;
    Result<void> createDirectory(const std::filesystem::path& path) override;
    Result<std::vector<std::filesystem::path>> contentsOfDirectory(
        const std::filesystem::path& path) override;
    Result<void> removeItem(const std::filesystem::path& path) override;

    std::filesystem::path temporaryDirectory() override { return temporary_.path(); }
    /// For the orderly end of a process that does not destroy this object.
    void removeTemporaryDirectory() { temporary_.remove(); }

private:
    TemporaryDirectory temporary_;
};

}  // namespace quillmere
