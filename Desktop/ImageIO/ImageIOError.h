// What reading and writing of pictures can fail with.
#pragma once

#include <string>
#include <utility>

#include "Base/Error.h"

namespace quillmere {

/// The codes of the domain "quillmere.imageio".
enum class ImageIOErrorCode {
    empty = 1,
    unknownFormat = 2,
    damaged = 3,  // or a variant of a known format that can't be read
    tooLarge = 4,
    outOfMemory = 5,
    noBitmap = 6,
    notEncoded = 7,
    unavailable = 8,  // the library behind all this did not start
};

/// `sentence` is for a user: what is wrong, in whole sentences.
inline Error imageIOError(ImageIOErrorCode code, std::string sentence,
                          std::vector<std::string> values = {}) {
    return {"quillmere.imageio", static_cast<int>(code), std::move(sentence), std::move(values)};
}

inline Error imageIOUnavailable() {
    return imageIOError(ImageIOErrorCode::unavailable,
                        "The library for picture files could not be started.");
}

inline Error imageIOOutOfMemory() {
    return imageIOError(ImageIOErrorCode::outOfMemory,
                        "There is not enough memory for a picture of this size.");
}

}  // namespace quillmere
