// Where the work files of videos live: picked copies and outputs of jobs.
#pragma once

#include <filesystem>
#include <functional>
#include <string_view>

#include "Platform/Application/Console.h"
#include "Platform/FileManager/FileManager.h"
#include "Platform/Localization/DateFormatter.h"
#include "Platform/Localization/FirstCharacters.h"

namespace quillmere {

/// Any thread. Work files lie in a folder of the process's temporary one, and go with it.
class VideoFileManager {
public:
    /// Characters of a source's name that a work file keeps.
    static constexpr std::size_t keptCharacters = 20;

    struct Ports {
        FileManager& fileManager;
        const DateFormatter& dateFormatter;
        Console& console;
        FirstCharacters firstCharacters;
        std::function<Date()> now = [] { return std::chrono::system_clock::now(); };
    };

    explicit VideoFileManager(Ports ports) : ports_(std::move(ports)) {}

    /// The folder, made if need be. Where it can't be made, that is printed, and the first file
    /// fails.
    std::filesystem::path videosDirectory();

    /// A new work file's name: the beginning of `fileName` without its extension, the local time
    /// to the second, and `extension` with its point. Two calls within a second give one name.
    std::filesystem::path makeOutputUrl(std::string_view fileName, std::string_view extension);

    /// Empties the process's temporary folder, the videos first. The first failure ends it, and is
    /// only printed.
    void clearTemporaryVideos();

    Result<void> removeItem(const std::filesystem::path& name,
                            const std::filesystem::path& directory);

private:
    Result<void> empty(const std::filesystem::path& directory);

    Ports ports_;
};

}  // namespace quillmere
