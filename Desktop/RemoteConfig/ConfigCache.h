// What a server said last, kept for the next process.
#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>

#include "Base/Result.h"
#include "Desktop/RemoteConfig/ConfigValues.h"
#include "Platform/FileManager/FileManager.h"

namespace quillmere {

struct FetchedConfig {
    ConfigValues values;
    /// What the server calls this version of its document; empty where it doesn't name it.
    std::string entityTag;
    /// When the server last said that this is the version.
    std::chrono::system_clock::time_point fetchedAt;
};

/// One file, written whole or not at all. Any thread.
class ConfigCache {
public:
    /// Answers of `endpoint` only: those of another are not given out. The file lies in `folder`,
    /// which is made when it is needed.
    ConfigCache(FileManager& fileManager, const std::filesystem::path& folder,
                std::string endpoint);

    /// Nothing where nothing was kept, or the file is not as it was written.
    std::optional<FetchedConfig> load() const;

    Result<void> store(const FetchedConfig& fetched) const;

private:
    FileManager& fileManager_;
    const std::filesystem::path file_;
    const std::string endpoint_;
};

}  // namespace quillmere
