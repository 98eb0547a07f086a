// The finished video: played, saved in the media library, shared.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "Base/Published.h"
#include "Platform/AVFoundation/AVFoundation.h"
#include "Platform/Analytics/Analytics.h"
#include "Platform/Application/UIApplication.h"
#include "Platform/CrashLog/CrashLog.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Localization/Localization.h"
#include "Platform/Photos/PHPhotoLibrary.h"
#include "Platform/Sharing/UIActivityViewController.h"
#include "Platform/UserDefaults/UserDefaults.h"
#include "Quillmere/Views/Common/AlertTypes.h"

namespace quillmere {

/// A work file that is gone when the home screen appears; nothing reaches the library before the
/// user asks, and each save adds an asset. Main thread. By shared pointers: a save that is under
/// way keeps it.
class VideoPreviewViewModel : public std::enable_shared_from_this<VideoPreviewViewModel> {
public:
    struct Ports {
        Dispatch& dispatch;
        Analytics& analytics;
        const Localization& localization;
        const UserDefaults& userDefaults;
        AVFoundation& avFoundation;
        PHPhotoLibrary& photoLibrary;
        const UIApplication& application;
        UIActivityViewController& activities;
        CrashLog& crashLog;
    };

    /// How long the confirmation of a save stays.
    static constexpr double confirmationSeconds = 2;

    VideoPreviewViewModel(const Ports& ports, std::filesystem::path videoUrl)
        : ports_(ports), videoUrl_(std::move(videoUrl)) {}

    Published<std::optional<AlertTypes>> alert;
    /// The text to be shown for `confirmationSeconds`, each time it is set to one.
    Published<std::optional<std::string>> confirmation;

    const std::filesystem::path& videoUrl() const { return videoUrl_; }
    /// How far its frames are to be turned with the clock, in degrees, to be seen upright.
    double rotation() const;

    void saveTapped();
    void shareTapped();

private:
    void saved(bool success, const std::optional<Error>& error);
    void savedTheOlderWay(const std::optional<Error>& error);
    void showError(const Error& error, bool tooLarge);
    bool isLongerThanUsual() const;

    Ports ports_;
    const std::filesystem::path videoUrl_;
    bool isTooLarge_ = false;  // of the first attempt, for the wording of the second
};

}  // namespace quillmere
