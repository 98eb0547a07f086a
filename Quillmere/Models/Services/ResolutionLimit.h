// How large a picture may be that goes through a network.
#pragma once

#include "Platform/UserDefaults/UserDefaults.h"

namespace quillmere {

/// The longest side of a working picture in points, as the user chose it: 1024 for a stored
/// `resolutionLimitIndexKey` of 0, and 2048 for any other value. Any thread.
double resolutionLimit(const UserDefaults& userDefaults);

}  // namespace quillmere
