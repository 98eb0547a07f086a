// The stored choices and counters of the user.
#pragma once

#include <cstdint>
#include <string_view>

namespace quillmere {

/// A flat store of integers and booleans by key. May be called from any thread.
///
/// Nobody registers defaults: a key that was never set reads as 0 and false. Nothing is cached for
/// the caller, so each read tells what was set last, by this process or another. A store that
/// can't keep its values tells the console, never the caller.
class UserDefaults {
public:
    virtual ~UserDefaults() = default;

    /// 0 for a key that was never set; 1 and 0 for a boolean.
    virtual std::int64_t integerForKey(std::string_view key) const = 0;

    /// False for a key that was never set; whether an integer is other than 0.
    virtual bool boolForKey(std::string_view key) const = 0;

    virtual void setInteger(std::int64_t value, std::string_view key) = 0;
    virtual void setBool(bool value, std::string_view key) = 0;
};

}  // namespace quillmere
