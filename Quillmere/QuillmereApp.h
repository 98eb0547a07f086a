// The application: the one place where its logic is put together over a platform.
#pragma once

#include "Base/NotificationCenter.h"
#include "Base/Shared.h"
#include "Platform/Analytics/Analytics.h"
#include "Platform/Application/Bundle.h"
#include "Platform/CoreML/CoreML.h"
#include "Quillmere/AppDelegate.h"
#include "Quillmere/ContentView.h"
#include "Quillmere/Models/Enhance/ModelCatalogue.h"
#include "Quillmere/Models/Enhance/ModelWarmUp.h"
#include "Quillmere/Models/Services/Notifications.h"
#include "Quillmere/Models/Services/ProjectSettings.h"

namespace quillmere {

/// On a desktop, `active` is a focused window and `inactive` any other one; suspend, the end of
/// the session and quitting are `background`. Other values mean nothing here.
enum class ScenePhase { background, inactive, active };

/// The instances called shared belong to it, and are made at their first touch.
///
/// Main thread, except where a member says otherwise. Lives until the end of the process, and
/// everything in `Platform` longer: what it starts calls back at any time.
class QuillmereApp {
public:
    struct Platform {
        Dispatch& dispatch;
        FIRApp& services;
        ALPrivacySettings& adPrivacy;
        GADMobileAds& mobileAds;
        UMPConsentInformation& consentInformation;
        UMPConsentForm& consentForm;
        const UIApplication& application;
        const UserDefaults& userDefaults;
        RemoteConfig& remoteConfig;
        CoreML& coreML;
        const Bundles& bundles;
        Analytics& analytics;
        CrashLog& crashLog;
        Console& console;
        const ProjectSettings& settings;
    };

    explicit QuillmereApp(const Platform& platform);

    AppDelegate& appDelegate() { return appDelegate_; }
    ContentView& contentView() { return contentView_; }

    /// Any thread.
    Shared<RemoteConfigClient>& remoteConfigClient() { return remoteConfigClient_; }
    /// Main thread, as is the next.
    Shared<AppOpenAdManager>& appOpenAdManager() { return appOpenAdManager_; }
    Shared<InterstitialAdManager>& interstitialAdManager() { return interstitialAdManager_; }
    /// The default one of the process. Any thread.
    NotificationCenter& notificationCenter() { return notificationCenter_; }

    /// To be called at each change, the first phase included. Each `background` posts
    /// `cancelSaveVideo`, whether or not there is anything to cancel.
    void scenePhaseChanged(ScenePhase phase);

private:
    Platform platform_;
    NotificationCenter notificationCenter_;
    ModelCatalogue catalogue_;
    ModelWarmUp warmUp_;
    Shared<RemoteConfigClient> remoteConfigClient_;
    Shared<AppOpenAdManager> appOpenAdManager_;
    Shared<InterstitialAdManager> interstitialAdManager_;
    AppDelegate appDelegate_;
    ContentView contentView_;
};

}  // namespace quillmere
