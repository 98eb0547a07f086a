#include "Quillmere/Models/Services/ResolutionLimit.h"

#include "Quillmere/Models/Services/PreferenceKeys.h"

namespace quillmere {

double resolutionLimit(const UserDefaults& userDefaults) {
    return userDefaults.integerForKey(resolutionLimitIndexKey) == 0 ? 1024.0 : 2048.0;
}

}  // namespace quillmere
