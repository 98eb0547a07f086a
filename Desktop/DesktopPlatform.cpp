#include "Desktop/DesktopPlatform.h"

#include <chrono>
#include <utility>

#include "Desktop/AdLibrary/HouseAds.h"
#include "Desktop/AdLibrary/NoAds.h"
#include "Desktop/Application/ProjectSettingsFile.h"
#include "Desktop/FileManager/UserFolders.h"
#include "Desktop/Localization/PseudoLanguage.h"
#include "Quillmere/Models/Services/LocalizedReason.h"

namespace quillmere {
namespace {

Result<StringsFile> textsIn(const Bundle& bundle, std::string_view language) {
    const bool isPseudo = language == pseudoLanguage;
    const std::string_view file = isPseudo ? languages.front() : language;
    auto texts = StringsFile::read(
        bundle.urlForResource(file, "json").value_or(std::string(file) + ".json"));
    if (texts && isPseudo) texts->transform(pseudolocalized);
    return texts;
}

/// An edition may come without the file.
ProjectSettings settingsIn(const Bundle& bundle, FileManager& fileManager, Console& console) {
    const auto path = bundle.urlForResource("ProjectSettings", "json");
    return path ? readProjectSettings(fileManager, *path, console) : ProjectSettings();
}

std::unique_ptr<OfflineAds> adsOf(const ProjectSettings& settings, Dispatch& dispatch,
                                  AdStage& stage) {
    if (settings.ads == AdSource::house) return std::make_unique<HouseAds>(dispatch, stage);
    return std::make_unique<NoAds>(dispatch);
}

}  // namespace

std::string DesktopPlatform::reasonOf(const Error& error) {
    const auto bundle = ResourceBundle::besideTheProgram();
    const auto texts = bundle ? textsIn(*bundle, userLanguage()) : bundle.error();
    return texts ? localizedReason(error, *texts) : error.localizedDescription;
}

Result<std::unique_ptr<DesktopPlatform>> DesktopPlatform::make(
    std::string_view language, const std::optional<ProjectSettings>& edition) {
    auto bundle = ResourceBundle::besideTheProgram();
    if (!bundle) return bundle.error();
    auto strings = textsIn(*bundle, language);
    if (!strings) return strings.error();
    return std::unique_ptr<DesktopPlatform>(
        new DesktopPlatform(*std::move(bundle), *std::move(strings), edition));
}

DesktopPlatform::DesktopPlatform(ResourceBundle bundle, StringsFile strings,
                                 const std::optional<ProjectSettings>& edition)
    : bundle_(std::move(bundle)),
      strings_(std::move(strings)),
      crashLog_(userStateFolder()),
      analytics_(userStateFolder()),
      settings_(edition ? *edition : settingsIn(bundle_, fileManager_, console_)),
      services_(crashLog_),
      consent_(dispatch_, fileManager_, userDataFolder(),
               !settings_.adApplicationIdentifier.empty()),
      ads_(adsOf(settings_, dispatch_, adStage_)),
      urlSession_(dispatch_),
      remoteConfig_({urlSession_, fileManager_, dispatch_, bundle_, console_},
                    settings_.remoteConfigEndpoint, userCacheFolder()),
      userDefaults_(userDataFolder(), console_),
      imageIO_(pool_),
      coreImage_(pool_),
      coreML_(networks_),
      vision_(coreImage_),
      movies_(dispatch_),
      videoToolbox_(pool_) {}

DesktopPhotoLibrary* DesktopPlatform::photoLibrary() {
    std::call_once(photoLibraryMade_, [this] {
        auto folders = userMediaFolders();
        if (!folders) return;
        photoLibrary_ = std::make_unique<DesktopPhotoLibrary>(
            DesktopPhotoLibrary::Ports{dispatch_, fileManager_, imageIO_, console_},
            *std::move(folders), userDataFolder());
    });
    return photoLibrary_.get();
}

void DesktopPlatform::recordOrderlyEnd() {
    analytics_.end(std::chrono::milliseconds(500));
    crashLog_.end();
    fileManager_.removeTemporaryDirectory();
}

}  // namespace quillmere
