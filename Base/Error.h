// One shape for everything that can go wrong for a reason outside the program.
#pragma once

#include <string>
#include <vector>

namespace quillmere {

/// What an operation answers when it failed: a file, a device or a library said no.
///
/// `domain` and `code` are what callers branch on; `localizedDescription` is a whole sentence for
/// a user. Where it comes from a resource, it is in the user's language. Others are made in
/// English, which is also how their translations are found: `sentence` is the key of them.
struct Error {
    Error() = default;
    /// `words` holds a placeholder of `formatString` for each of the values.
    Error(std::string domain_, int code_, std::string words, std::vector<std::string> values_ = {});

    std::string domain;
    int code = 0;
    std::string localizedDescription;
    std::string sentence;  // before its values were filled in
    std::vector<std::string> values;

    friend bool operator==(const Error&, const Error&) = default;
};

}  // namespace quillmere
