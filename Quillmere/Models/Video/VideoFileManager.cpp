#include "Quillmere/Models/Video/VideoFileManager.h"

#include <string>

namespace quillmere {
namespace {

/// The first `count` characters of UTF-8; of a name that isn't, so many bytes that begin none.
std::string_view firstCharacters(std::string_view text, std::size_t count) {
    std::size_t end = 0;
    for (; end < text.size(); ++end) {
        const bool beginsOne = (static_cast<unsigned char>(text[end]) & 0xC0) != 0x80;
        if (beginsOne && count-- == 0) break;
    }
    return text.substr(0, end);
}

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
    return videosDirectory() / (std::string(firstCharacters(stem, keptCharacters)) + "_" + time +
                                std::string(extension));
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
