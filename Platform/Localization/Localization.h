// Texts for the user, by key.
#pragma once

#include <string>
#include <string_view>

namespace quillmere {

/// May be called from any thread.
class Localization {
public:
    virtual ~Localization() = default;

    /// The text of `key` in the user's language; the key itself where there is none.
    virtual std::string localizedString(std::string_view key) const = 0;
};

}  // namespace quillmere
