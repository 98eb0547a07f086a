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
    std::set<std::filesystem::path> refused;  // can neither be made nor removed, nor written into

    Result<std::vector<std::byte>> contentsOfFile(const std::filesystem::path& path) override {
        if (folders.contains(path)) return failure(EISDIR, path);
        const auto found = files.find(path);
        if (found == files.end()) return failure(ENOENT, path);
        return found->second;
    }

    Result<void> writeFile(const std::filesystem::path& path, std::span<const std::byte> contents,
                           WriteExisting existing) override {
        if (!folders.contains(path.parent_path())) return failure(ENOENT, path);
        if (refused.contains(path.parent_path())) return failure(EACCES, path);
        if (folders.contains(path)) return failure(EISDIR, path);
        if (existing == WriteExisting::refuse && files.contains(path)) {
            return failure(EEXIST, path);
        }
        files[path].assign(contents.begin(), contents.end());
        return {};
    }

    Result<void> copyItem(const std::filesystem::path& source,
                          const std::filesystem::path& target) override {
        const auto contents = contentsOfFile(source);
        if (!contents) return contents.error();
        return writeFile(target, *contents, WriteExisting::replace);
    }

    Result<void> createDirectory(const std::filesystem::path& path) override {
        for (auto folder = path; !folder.empty(); folder = folder.parent_path()) {
            if (files.contains(folder) || refused.contains(folder)) return failure(EEXIST, path);
            folders.insert(folder);
            if (folder == folder.parent_path()) break;
        }
        return {};
    }

    Result<std::vector<std::filesystem::path>> contentsOfDirectory(
        const std::filesystem::path& path) override {
        if (!folders.contains(path)) return failure(files.contains(path) ? ENOTDIR : ENOENT, path);
        std::vector<std::filesystem::path> names;
        const auto add = [&](const std::filesystem::path& item) {
            if (item.parent_path() == path && item != path) names.push_back(item.filename());
        };
        for (const auto& folder : folders) add(folder);
        for (const auto& [file, contents] : files) add(file);
        return names;
    }

    Result<void> removeItem(const std::filesystem::path& path) override {
        if (refused.contains(path)) return failure(EACCES, path);
        const auto lies = [&](const std::filesystem::path& item) {
            return item == path || item.string().starts_with(path.string() + "/");
        };
        const auto removed =
            std::erase_if(files, [&](const auto& file) { return lies(file.first); });
        if (removed + std::erase_if(folders, lies) == 0) return failure(ENOENT, path);
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
