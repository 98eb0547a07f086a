#include "Quillmere/Models/Video/VideoFileManager.h"

#include <string>

namespace quillmere {
namespace {

// File systems take names of 255 bytes, and the time and the extension are still to come.
constexpr std::size_t mostBytes = 200;

}  // namespace

std::filesystem::path VideoFileManager::videosDirectory() {
    const auto folder = ports_.fileManager.temporaryDirectory() / "Videos";
    const auto made = ports_.fileManager.createDirectory(folder);
    if (!made) ports_.console.print(made.error().localizedDescription);
    return folder;
}

std::filesystem::path VideoFileManager::makeOutputUrl(std::string_view fileName,
                                                      std::string_view extension) {
    const std::string stem = std::filesystem::path(fileName).stem().string();
    const std::string time = ports_.dateFormatter.stringFromDate(ports_.now(), "yyyy_MM_dd_HHmmss",
                                                                 DateFormatter::TimeZone::local);
    std::size_t count = keptCharacters;
    std::string kept = ports_.firstCharacters(stem, count);
    while (kept.size() > mostBytes) kept = ports_.firstCharacters(stem, --count);
    return videosDirectory() / (kept + "_" + time + std::string(extension));
}

void VideoFileManager::clearTemporaryVideos() {
    for (const auto& folder : {videosDirectory(), ports_.fileManager.temporaryDirectory()}) {
        if (const auto emptied = empty(folder); !emptied) {
            return ports_.console.print(emptied.error().localizedDescription);
        }
    }
}

Result<void> VideoFileManager::empty(const std::filesystem::path& directory) {
    const auto names = ports_.fileManager.contentsOfDirectory(directory);
    if (!names) return names.error();
    for (const auto& name : *names) {
        if (const auto removed = removeItem(name, directory); !removed) return removed.error();
    }
    return {};
}

Result<void> VideoFileManager::removeItem(const std::filesystem::path& name,
                                          const std::filesystem::path& directory) {
    return ports_.fileManager.removeItem(directory / name);
}

}  // namespace quillmere
