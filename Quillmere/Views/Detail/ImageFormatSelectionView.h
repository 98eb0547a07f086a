// The sheet on which the user chooses the format of saved pictures, and what they keep.
#pragma once

#include <array>

#include "Base/Published.h"
#include "Platform/UserDefaults/UserDefaults.h"
#include "Quillmere/Models/Services/PreferenceKeys.h"
#include "Quillmere/Models/Services/UserDefaultsHelper.h"

namespace quillmere {

/// Each choice is stored the moment it changes; closing the sheet undoes nothing. Main thread.
class ImageFormatSelectionView {
public:
    static constexpr double height = 490;  // points; the drag indicator is seen

    struct FormatRow {
        UserDefaultsHelper::ImageFormat format;
        const char* name;  // shown as it stands
        const char* descriptionKey;
    };
    static constexpr std::array<FormatRow, 3> formatRows{{
        {UserDefaultsHelper::ImageFormat::jpg, "JPG", "FormatDescriptionJPG"},
        {UserDefaultsHelper::ImageFormat::heic, "HEIC", "FormatDescriptionHEIC"},
        {UserDefaultsHelper::ImageFormat::png, "PNG", "FormatDescriptionPNG"},
    }};

    ImageFormatSelectionView(UserDefaults& userDefaults, Published<bool>& isPresented)
        : selectedFormat(UserDefaultsHelper::imageFormat(userDefaults)),
          preserveCreationDate(userDefaults.boolForKey(preserveCreationDateKey)),
          preserveLocation(userDefaults.boolForKey(preserveLocationKey)),
          userDefaults_(userDefaults),
          isPresented_(isPresented) {}

    Published<UserDefaultsHelper::ImageFormat> selectedFormat;
    Published<bool> preserveCreationDate;
    Published<bool> preserveLocation;

    void doneTapped() { isPresented_.set(false); }

private:
    UserDefaults& userDefaults_;
    Published<bool>& isPresented_;
    Subscription formatChanged_ =
        selectedFormat.subscribe([this](UserDefaultsHelper::ImageFormat format) {
            userDefaults_.setInteger(static_cast<std::int64_t>(format), imageFormatKey);
        });
    Subscription creationDateChanged_ = preserveCreationDate.subscribe(
        [this](bool keeps) { userDefaults_.setBool(keeps, preserveCreationDateKey); });
    Subscription locationChanged_ = preserveLocation.subscribe(
        [this](bool keeps) { userDefaults_.setBool(keeps, preserveLocationKey); });
};

}  // namespace quillmere
