// What comes to the home screen: picks in the library, files, and pictures that were pasted.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Base/Published.h"
#include "Base/Result.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/FileManager/FileManager.h"
#include "Platform/ImageIO/ImageIO.h"
#include "Platform/Localization/Localization.h"
#include "Platform/Photos/PHPickerResult.h"
#include "Quillmere/Models/Video/VideoFileManager.h"
#include "Quillmere/Views/Home/HomeView.h"

namespace quillmere {

/// Reads and decodes off the main thread, each input once. What comes takes the place of what is
/// still on its way, whose picture or video is dropped when it arrives. Main thread; lives until
/// the end of the process.
class WaysIn {
public:
    using Decode = std::function<Result<UIImage>()>;

    struct Ports {
        HomeView& home;
        Dispatch& dispatch;
        FileManager& fileManager;
        VideoFileManager& videoFiles;
        ImageIO& imageIO;
        const Localization& localization;
        /// What the library's picker would give for a file, which need not lie in the library;
        /// nothing for one that is no picture or video. Any thread; takes as long as the disk does.
        std::function<std::optional<PHPickerResult>(const std::filesystem::path&)>
            pickerResultForFile;
    };
    explicit WaysIn(Ports ports) : ports_(std::move(ports)) {}
    WaysIn(const WaysIn&) = delete;
    WaysIn& operator=(const WaysIn&) = delete;

    /// Something is on its way: read, copied or decoded.
    Published<bool> isLoading{false};

    /// The end of the library's picker: its picks, or none for a cancel.
    void picked(const std::vector<PHPickerResult>& results);
    /// The end of the file picker: a file, or none for a cancel. What is no picture is told.
    void filePicked(const std::optional<std::filesystem::path>& file);
    /// Files that were dropped, pasted, or come from another program; they go the way of the
    /// library's picks. A video comes alone. One that is neither picture nor video is told.
    void open(const std::vector<std::filesystem::path>& files);
    /// A picture without a file. `decode` is called once, on another thread.
    void paste(Decode decode);
    /// Nothing is to come of what is on its way.
    void cancel();

private:
    struct Pick;

    /// Numbers what comes, so that an earlier one is known when it arrives.
    std::uint64_t begin();
    bool isLatest(std::uint64_t number) const { return number == latest_; }
    void end(std::uint64_t number);
    void pickPictures(const std::vector<PHPickerResult>& results);
    void pickVideo(const std::vector<PHPickerResult>& results);
    void openResults(std::vector<PHPickerResult> results);
    void decodeInBackground(Decode decode, std::function<void(const Error&)> failed);
    void refuse(const std::filesystem::path& file);
    void showError(std::string message);

    const Ports ports_;
    std::uint64_t latest_ = 1;
};

}  // namespace quillmere
