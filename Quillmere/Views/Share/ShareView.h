// What stands in the overlay after a picture was saved: one of two screens, by a remote value.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Base/Published.h"
#include "Base/UniformRandom.h"
#include "Platform/Analytics/Analytics.h"
#include "Platform/Application/Console.h"
#include "Platform/Application/UIApplication.h"
#include "Platform/CrashLog/CrashLog.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/FileManager/FileManager.h"
#include "Platform/ImageIO/ImageIO.h"
#include "Platform/Localization/Localization.h"
#include "Platform/RemoteConfig/RemoteConfig.h"
#include "Platform/Sharing/UIActivityViewController.h"
#include "Platform/UserDefaults/UserDefaults.h"
#include "Quillmere/Models/Services/MoreApp.h"

namespace quillmere {

struct SharePorts {
    Dispatch& dispatch;
    Analytics& analytics;
    const Localization& localization;
    const UserDefaults& userDefaults;
    const RemoteConfig& remoteConfig;
    ImageIO& imageIO;
    FileManager& fileManager;
    UIApplication& application;
    UIActivityViewController& activities;
    CrashLog& crashLog;
    Console& console;
    const ProjectSettings& settings;
    RandomSource random = systemRandom;
};

/// Made each time the overlay opens, and gone when it closes. Main thread, as are the two screens.
class ShareView {
public:
    explicit ShareView(const SharePorts& ports) : ports_(ports) {}

    /// Which screen there is to be: `EnhancedShareView`, or `OriginalShareView`.
    bool isEnhanced() const;
    /// Each time it appears. The value may have changed since the content was made.
    void appear() const;

private:
    SharePorts ports_;
};

/// What both screens do alike.
class ShareScreen {
public:
    const UIImage& convertedImage() const { return convertedImage_; }
    void moreAppTapped(std::size_t index) const;

protected:
    ShareScreen(const SharePorts& ports, UIImage convertedImage, const char* variant)
        : ports_(ports), convertedImage_(std::move(convertedImage)), variant_(variant) {}

    /// The entry of `allMoreApps` whose turn it is by the count of saves.
    std::size_t moreAppOfTheTurn() const;
    /// With the screen's variant.
    void log(std::string_view event, AnalyticsParameters further = {}) const;
    void presentOnTop(ActivityItem item) const;

    const SharePorts ports_;

private:
    const UIImage convertedImage_;
    const char* const variant_;
};

class OriginalShareView : public ShareScreen {
public:
    OriginalShareView(const SharePorts& ports, UIImage convertedImage)
        : ShareScreen(ports, std::move(convertedImage), "original") {}

    /// Of the check mark, which springs half a second after the screen's appearance.
    Published<double> iconScale{0.01};

    void appear();
    void shareImageTapped() const;
    void shareToFriendsTapped() const;
    /// Into `allMoreApps`: a fixed one, and the one whose turn it is.
    std::vector<std::size_t> moreApps() const;
};

class EnhancedShareView : public ShareScreen,
                          public std::enable_shared_from_this<EnhancedShareView> {
public:
    enum class ShareOption { image, instagram, message, other };

    EnhancedShareView(const SharePorts& ports, UIImage convertedImage)
        : ShareScreen(ports, std::move(convertedImage), "enhanced") {}

    Published<double> iconScale{0.01};
    Published<bool> isShareSheetPresented{false};
    Published<std::optional<ShareOption>> selectedShareOption;
    /// The buttons spring to their place: the main one from 0.8 of its size, the row of options
    /// from 20 points beneath and from nothing.
    Published<bool> animateShareButtons{false};
    Published<bool> isInstagramInstalled{false};
    Published<bool> showConfetti{false};

    void appear();
    /// In their order; without the one whose application isn't there.
    std::vector<ShareOption> options() const;
    void shareImageTapped();
    void optionTapped(ShareOption option);
    /// To be called when the sheet of `isShareSheetPresented` is built.
    std::vector<ActivityItem> activityItems();
    void shareToFriendsTapped() const;
    std::vector<std::size_t> moreApps() const { return {moreAppOfTheTurn()}; }

private:
    void openInstagram();

    bool impressionSent_ = false;
};

/// The case's name.
std::string_view nameOf(EnhancedShareView::ShareOption option);

}  // namespace quillmere
