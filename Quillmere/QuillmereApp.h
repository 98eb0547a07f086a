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
#include "Quillmere/Models/Services/ProjectSettings.h"

namespace quillmere {

/// Posted when work that can't go on in the background has to end.
inline constexpr std::string_view cancelSaveVideo = "cancelSaveVideo";

/// On a desktop, `active` is a focused window and `inactive` any other one; suspend, the end of
/// the session and quitting are `background`. Other values mean nothing here.
enum class ScenePhase { background, inactive, active };

/// Main thread, except where a member says otherwise. Lives until the end of the process, and
/// everything in `Platform` longer: what it starts calls back at any time.
class QuillmereApp {
public:
    struct Platform {
        FIRApp& services;
        ALPrivacySettings& adPrivacy;
        RemoteConfig& remoteConfig;
        CoreML& coreML;
        const Bundles& bundles;
        Analytics& analytics;
        const ProjectSettings& settings;
        ContentView::Ports content;
    };

    explicit QuillmereApp(const Platform& platform);

    AppDelegate& appDelegate() { return appDelegate_; }
    ContentView& contentView() { return contentView_; }

    /// Any thread.
    Shared<RemoteConfigClient>& remoteConfigClient() { return remoteConfigClient_; }
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
    AppDelegate appDelegate_;
    ContentView contentView_;
};

}  // namespace quillmere
