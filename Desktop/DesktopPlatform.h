// The one place where the desktop's adapters are chosen and wired.
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string_view>

#include "Base/Result.h"
#include "Base/WorkerPool.h"
#include "Desktop/AVFoundation/LazyMovies.h"
#include "Desktop/AdLibrary/AdStage.h"
#include "Desktop/AdLibrary/OfflineAds.h"
#include "Desktop/Analytics/EventLog.h"
#include "Desktop/Application/DesktopDevice.h"
#include "Desktop/Application/DesktopServices.h"
#include "Desktop/Application/ErrorStreamConsole.h"
#include "Desktop/Application/ResourceBundle.h"
#include "Desktop/Consent/DesktopConsent.h"
#include "Desktop/CoreImage/DesktopCoreImage.h"
#include "Desktop/CoreML/DesktopCoreML.h"
#include "Desktop/CrashLog/RunFile.h"
#include "Desktop/Dispatch/DesktopDispatch.h"
#include "Desktop/FileManager/DesktopFileManager.h"
#include "Desktop/Graphics/DesktopGraphics.h"
#include "Desktop/ImageIO/DesktopImageIO.h"
#include "Desktop/ImageIO/DesktopImageMetadata.h"
#include "Desktop/Localization/StringsFile.h"
#include "Desktop/Localization/SystemDateFormatter.h"
#include "Desktop/Localization/UserLanguage.h"
#include "Desktop/Photos/DesktopPhotoLibrary.h"
#include "Desktop/RemoteConfig/DesktopRemoteConfig.h"
#include "Desktop/URLSession/DesktopURLSession.h"
#include "Desktop/UserDefaults/DesktopUserDefaults.h"
#include "Desktop/VideoToolbox/DesktopVideoToolbox.h"
#include "Desktop/Vision/DesktopVision.h"
#include "Neural/Runtime/NetworkCache.h"
#include "Quillmere/Models/Services/ProjectSettings.h"

namespace quillmere {

/// Owns every adapter; lives as long as what uses them. Its operations only hand them
/// out, from any thread.
class DesktopPlatform {
public:
    /// Its texts are in `language`, one of `languages` or the pseudo-language. Fails, with a
    /// sentence for the user, where the program's own resources are missing. Without an `edition`,
    /// it is the one of the file among these resources.
    static Result<std::unique_ptr<DesktopPlatform>> make(
        std::string_view language = languages.front(),
        const std::optional<ProjectSettings>& edition = {});

    /// What a user is told of an error by whoever ends before there is a platform: in the user's
    /// language, where the program's texts can be read.
    static std::string reasonOf(const Error& error);

    DesktopDispatch& dispatch() { return dispatch_; }
    CoreML& coreML() { return coreML_; }
    CoreImage& coreImage() { return coreImage_; }
    Vision& vision() { return vision_; }
    Graphics& graphics() { return graphics_; }
    ImageIO& imageIO() { return imageIO_; }
    ImageMetadata& imageMetadata() { return imageMetadata_; }
    /// Null, as is the next, where the program came without its movie module.
    AVFoundation* avFoundation() { return movies_.avFoundation(); }
    AudioToolbox* audioToolbox() { return movies_.audioToolbox(); }
    VideoToolbox& videoToolbox() { return videoToolbox_; }
    /// Made at the first call, for most runs need none. Null for a user without a home.
    DesktopPhotoLibrary* photoLibrary();
    FileManager& fileManager() { return fileManager_; }
    URLSession& urlSession() { return urlSession_; }
    RemoteConfig& remoteConfig() { return remoteConfig_; }
    DesktopUserDefaults& userDefaults() { return userDefaults_; }
    Analytics& analytics() { return analytics_; }
    OfflineAds& ads() { return *ads_; }
    AdStage& adStage() { return adStage_; }
    FIRApp& services() { return services_; }
    DesktopConsent& consent() { return consent_; }
    CrashLog& crashLog() { return crashLog_; }
    Console& console() { return console_; }
    const Device& device() const { return device_; }
    const ProjectSettings& projectSettings() const { return settings_; }
    const Localization& localization() const { return strings_; }
    const DateFormatter& dateFormatter() const { return dateFormatter_; }
    const Bundles& bundles() const { return bundle_; }

    /// What an orderly end leaves on disk: waiting events, that this run ended in order, and no
    /// work files. For a process that ends without destroying this object; may take half a second.
    /// Any thread.
    void recordOrderlyEnd();

private:
    DesktopPlatform(ResourceBundle bundle, StringsFile strings,
                    const std::optional<ProjectSettings>& edition);

    WorkerPool pool_;
    neural::NetworkCache networks_{pool_};
    DesktopDispatch dispatch_;
    ResourceBundle bundle_;
    StringsFile strings_;
    SystemDateFormatter dateFormatter_;
    ErrorStreamConsole console_{strings_};
    RunFile crashLog_;
    EventLog analytics_;
    DesktopFileManager fileManager_;
    ProjectSettings settings_;
    DesktopServices services_;
    DesktopConsent consent_;
    AdStage adStage_;
    std::unique_ptr<OfflineAds> ads_;
    DesktopURLSession urlSession_;
    DesktopRemoteConfig remoteConfig_;
    DesktopUserDefaults userDefaults_;
    DesktopImageIO imageIO_;
    DesktopImageMetadata imageMetadata_;
    DesktopGraphics graphics_;
    DesktopCoreImage coreImage_;
    DesktopCoreML coreML_;
    DesktopVision vision_;
    LazyMovies movies_;
    DesktopVideoToolbox videoToolbox_;
    DesktopDevice device_;
    std::once_flag photoLibraryMade_;
    std::unique_ptr<DesktopPhotoLibrary> photoLibrary_;
};

}  // namespace quillmere
