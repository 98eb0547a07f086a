#include "Desktop/DesktopPlatform.h"

#include <utility>

#include "Desktop/FileManager/UserFolders.h"

namespace quillmere {

Result<std::unique_ptr<DesktopPlatform>> DesktopPlatform::make() {
    auto bundle = ResourceBundle::besideTheProgram();
    if (!bundle) return bundle.error();
    const auto english = bundle->urlForResource("en", "json");
    auto strings = StringsFile::read(english.value_or("en.json"));
    if (!strings) return strings.error();
    return std::unique_ptr<DesktopPlatform>(
        new DesktopPlatform(*std::move(bundle), *std::move(strings)));
}

DesktopPlatform::DesktopPlatform(ResourceBundle bundle, StringsFile strings)
    : bundle_(std::move(bundle)),
      strings_(std::move(strings)),
      userDefaults_(userDataFolder(), console_),
      imageIO_(pool_),
      coreImage_(pool_),
      coreML_(networks_),
      vision_(coreImage_) {}

}  // namespace quillmere
