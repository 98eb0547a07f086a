#include "Quillmere/Models/Services/PreferenceCounter.h"

#include <cstdint>
#include <limits>

#include "Base/Invariant.h"

namespace quillmere {

void incrementCounter(UserDefaults& userDefaults, std::string_view key) {
    const std::int64_t count = userDefaults.integerForKey(key);
    if (count == std::numeric_limits<std::int64_t>::max()) invariantBroken();
    userDefaults.setInteger(count + 1, key);
}

}  // namespace quillmere
