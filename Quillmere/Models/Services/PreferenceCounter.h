// Counting what a user did, across processes.
#pragma once

#include <string_view>

#include "Platform/UserDefaults/UserDefaults.h"

namespace quillmere {

/// Adds 1 to the stored integer of `key`. On the main thread: read and write are two steps. A count
/// that would overflow is a broken invariant.
void incrementCounter(UserDefaults& userDefaults, std::string_view key);

}  // namespace quillmere
