// What FFmpeg says, in the words of the port.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "Platform/AVFoundation/AVFoundation.h"

namespace quillmere {

/// `sentence` is for a user: what is wrong, in whole sentences.
inline Error movieError(AVErrorCode code, std::string sentence,
                        std::vector<std::string> values = {}) {
    return {AVFoundation::errorDomain, static_cast<int>(code), std::move(sentence),
            std::move(values)};
}

inline Error movieOutOfMemory() {
    return movieError(AVErrorCode::outOfMemory, "There is not enough memory for this movie.");
}

/// Of an FFmpeg function's answer below zero, while a movie was read or written.
Error readingError(int answer);
Error writingError(int answer);

}  // namespace quillmere
