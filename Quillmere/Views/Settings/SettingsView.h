// The settings: the limit of resolution, and the ways out of the application.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Base/Published.h"
#include "Platform/Analytics/Analytics.h"
#include "Platform/Application/Console.h"
#include "Platform/Application/UIApplication.h"
#include "Platform/Localization/Localization.h"
#include "Platform/Sharing/UIActivityViewController.h"
#include "Platform/UserDefaults/UserDefaults.h"
#include "Quillmere/Models/Services/MoreApp.h"
#include "Quillmere/Views/Common/AlertTypes.h"
#include "Quillmere/Views/Settings/MailView.h"

namespace quillmere {

/// A sheet, made each time it opens. Main thread.
class SettingsView {
public:
    struct Ports {
        UserDefaults& userDefaults;
        Analytics& analytics;
        const Localization& localization;
        UIApplication& application;
        UIActivityViewController& activities;
        const MFMailComposeViewController& mail;
        Console& console;
        const ProjectSettings& settings;
    };

    explicit SettingsView(const Ports& ports);

    /// Of the last mail; nothing reads it.
    Published<MailView::End> result;
    Published<bool> isShowingBugReportView{false};
    Published<bool> isShowingMailView{false};
    Published<bool> isLoading{false};
    Published<std::optional<AlertTypes>> alert;
    /// 0 for "1024px", 1 for "2048px"; stored the moment it changes.
    Published<std::int64_t> resolutionLimitIndex;

    void shareToFriendsTapped();
    void bugReportTapped() { isShowingBugReportView.set(true); }
    void contactTapped();
    void moreAppsTapped();
    void writeReviewTapped();
    void moreAppTapped(std::size_t index);

private:
    void log(std::string_view event) const;
    /// An edition without the page has an empty one.
    void open(const std::string& page);

    Ports ports_;
    Subscription limitChanged_;
};

}  // namespace quillmere
