// Which compiled model stands in a directory, told without opening it.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>

namespace quillmere::neural {

/// What the file system says of the model's files. One identity is one content, as long as files
/// are replaced by renaming, as `MappedFile` asks for.
struct ModelIdentity {
    struct File {
        std::uint64_t device = 0;
        std::uint64_t number = 0;  // the inode's
        std::int64_t bytes = 0;
        // In nanoseconds. Packages give all their files one time of modification; the time of the
        // last change, which nobody can set, then tells when a number is used a second time.
        std::int64_t modified = 0;
        std::int64_t changed = 0;

        friend bool operator==(const File&, const File&) = default;
    };

    std::array<File, 2> files;  // graph and weights

    /// Of the model that a path leads to; none where a file is missing or can't be looked at.
    static std::optional<ModelIdentity> of(const std::filesystem::path& directory);

    friend bool operator==(const ModelIdentity&, const ModelIdentity&) = default;
};

}  // namespace quillmere::neural
