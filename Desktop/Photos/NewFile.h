// A file on its way into the library, which nobody sees until it is whole.
#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string_view>

#include "Base/Date.h"
#include "Base/Result.h"
#include "Desktop/FileManager/PendingFile.h"
#include "Desktop/Photos/FileStamp.h"

namespace quillmere {

/// "Quillmere 2026-11-23 14.05.09.jpg" by the clock of the wall, with a number where that is taken
/// in `folder` or by one of `others`.
std::filesystem::path freeName(const std::filesystem::path& folder, std::string_view ending,
                               const std::set<std::filesystem::path>& others);

/// Makes a folder and those above it. Answers 0 or the system's error number. New folders have
/// their names on the disk when it returns.
int makeFolders(const std::filesystem::path& folder);

/// What a killed process left in `folder` under hidden names; never what a living one is writing.
void removeLeftovers(const std::filesystem::path& folder);

/// Operations answer 0 or the system's error number.
class NewFile {
public:
    /// `path` is absolute and its folder exists.
    explicit NewFile(std::filesystem::path path) : path_(std::move(path)), file_(path_) {}

    int writeBytes(std::span<const std::byte> bytes);
    /// A copy, which shares the bytes on the disk where the file system can. EINVAL for a source
    /// that is no regular file.
    int copyOf(const std::filesystem::path& source);
    /// Brings all to the disk, with the modification time that was asked for.
    int complete(std::optional<Date> modificationDate);
    /// Gives it its name; EEXIST where another has it.
    int name() { return file_.commit(); }

    const std::filesystem::path& path() const { return path_; }
    /// Once it is complete.
    const FileStamp& stamp() const { return stamp_; }
    /// Under which its bytes can be read before it has its name.
    std::filesystem::path pathOfContents() const;

private:
    std::filesystem::path path_;
    PendingFile file_;
    FileStamp stamp_;
};

}  // namespace quillmere
