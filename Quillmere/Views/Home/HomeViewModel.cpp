#include "Quillmere/Views/Home/HomeViewModel.h"

#include <utility>

#include "Quillmere/Models/Services/PreferenceCounter.h"
#include "Quillmere/Models/Services/PreferenceKeys.h"

namespace quillmere {

void HomeViewModel::refresh() {
    enableCrop.set(userDefaults_.boolForKey(enableCropKey));
    if (std::exchange(hasCheckLaunchCount_, true)) return;
    incrementCounter(userDefaults_, launchCountKey);
}

void HomeViewModel::toggleCrop() {
    userDefaults_.setBool(!userDefaults_.boolForKey(enableCropKey), enableCropKey);
    enableCrop.set(userDefaults_.boolForKey(enableCropKey));
}

}  // namespace quillmere
