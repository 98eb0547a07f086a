#pragma once

#include <cerrno>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "Platform/FileManager/FileManager.h"

namespace quillmere {

/// Files in memory; a folder exists once it stands in `folders`.
class FakeFileManager final : public FileManager {
public:
    std::map<std::filesystem::path, std::vector<std::byte>> files;
    std::set<std::filesystem::path> folders;

    Result<std::vector<std::byte>> contentsOfFile(const std::filesystem::path& path) override {
        if (folders.contains(path)) return failure(EISDIR, path);
        const auto found = files.find(path);
        if (found == files.end()) return failure(ENOENT, path);
        return found->second;
    }

    Result<void> writeFile(const std::filesystem::path& path, std::span<const std::byte> contents,
                           WriteExisting existing) override {
        if (!folders.contains(path.parent_path())) return failure(ENOENT, path);
        if (folders.contains(path)) return failure(EISDIR, path);
        if (existing == WriteExisting::refuse && files.contains(path)) {
            return failure(EEXIST, path);
        }
        files[path].assign(contents.begin(), contents.end());
        return {};
    }

    std::filesystem::path temporaryDirectory() override {
        folders.insert("/temporary");
        return "/temporary";
    }

private:
    static Error failure(int number, const std::filesystem::path& path) {
        return {posixErrorDomain, number, "Something is wrong with " + path.string() + "."};
    }
};

}  // namespace quillmere
