// What can go wrong in the network runtime, as callers branch on it.
#pragma once

#include <string>
#include <utility>

#include "Base/Error.h"

namespace quillmere::neural {

inline constexpr const char* kErrorDomain = "quillmere.neural";

enum class ErrorCode : int {
    unreadable = 1,          // a file is missing or can't be read or written
    malformed = 2,           // a file is damaged, or was never what it should be
    unsupportedVersion = 3,  // a compiled model of another format version
    unsupported = 4,         // published weights that use what the runtime doesn't have
    wrongSize = 5,           // an image whose size or channels don't fit the network
    outOfMemory = 6,
};

inline Error makeError(ErrorCode code, std::string sentence) {
    return {kErrorDomain, static_cast<int>(code), std::move(sentence)};
}

}  // namespace quillmere::neural
