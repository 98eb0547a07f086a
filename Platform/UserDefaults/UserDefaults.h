// The stored choices of the user.
#pragma once

#include <cstdint>
#include <string_view>

namespace quillmere {

/// May be called from any thread.
class UserDefaults {
public:
    virtual ~UserDefaults() = default;

    /// 0 for a key that was never stored.
    virtual std::int64_t integerForKey(std::string_view key) const = 0;
};

}  // namespace quillmere
