#include "Quillmere/Models/Services/UserDefaultsHelper.h"

#include "Quillmere/Models/Services/PreferenceKeys.h"

namespace quillmere {

std::optional<UserDefaultsHelper::ImageFormat> UserDefaultsHelper::imageFormatWithRawValue(
    std::int64_t rawValue) {
    for (const ImageFormat format : allImageFormats) {
        if (static_cast<std::int64_t>(format) == rawValue) return format;
    }
    return std::nullopt;
}

UserDefaultsHelper::ImageFormat UserDefaultsHelper::imageFormat(const UserDefaults& userDefaults) {
    return imageFormatWithRawValue(userDefaults.integerForKey(imageFormatKey))
        .value_or(ImageFormat::jpg);
}

}  // namespace quillmere
