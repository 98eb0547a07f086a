// One shape for everything that can go wrong for a reason outside the program.
#pragma once

#include <string>

namespace quillmere {

/// What an operation answers when it failed: a file, a device or a library said no.
///
/// `domain` and `code` are what callers branch on; `localizedDescription` is a whole sentence for
/// a user, already in the user's language where it comes from a resource.
struct Error {
    std::string domain;
    int code = 0;
    std::string localizedDescription;

    friend bool operator==(const Error&, const Error&) = default;
};

}  // namespace quillmere
