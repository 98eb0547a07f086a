// What happens once, before anything is on the screen.
#pragma once

#include "Base/Shared.h"
#include "Platform/AdLibrary/AdLibrary.h"
#include "Platform/Application/FIRApp.h"
#include "Quillmere/Models/Services/RemoteConfigClient.h"

namespace quillmere {

class AppDelegate {
public:
    AppDelegate(FIRApp& services, ALPrivacySettings& privacy,
                Shared<RemoteConfigClient>& remoteConfigClient)
        : services_(services), privacy_(privacy), remoteConfigClient_(remoteConfigClient) {}

    /// Sets up the services, then the privacy flags of the ad library, then starts the one fetch
    /// of remote values, whose end nothing waits for. Main thread; always true.
    bool applicationDidFinishLaunching();

private:
    FIRApp& services_;
    ALPrivacySettings& privacy_;
    Shared<RemoteConfigClient>& remoteConfigClient_;
};

}  // namespace quillmere
