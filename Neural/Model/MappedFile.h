// A file as read-only memory, so that several processes share one copy of the weights.
#pragma once

#include <cstddef>
#include <filesystem>
#include <span>

#include "Base/Result.h"

namespace quillmere::neural {

/// The bytes of a regular file for as long as the object lives; an empty file is an empty span.
///
/// Whoever replaces such a file must do so by renaming: a file that is cut while mapped ends the
/// process at the next touch.
class MappedFile {
public:
    static Result<MappedFile> open(const std::filesystem::path& path);

    MappedFile() = default;
    MappedFile(MappedFile&& other) noexcept;
    MappedFile& operator=(MappedFile&& other) noexcept;
    ~MappedFile();

    std::span<const std::byte> bytes() const { return bytes_; }

private:
    explicit MappedFile(std::span<const std::byte> bytes) : bytes_(bytes) {}

    std::span<const std::byte> bytes_;
};

}  // namespace quillmere::neural
