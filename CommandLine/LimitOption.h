// The option `--limit` in the place of the stored choice, for one run.
#pragma once

#include <optional>

#include "Platform/UserDefaults/UserDefaults.h"
#include "Quillmere/Models/Services/PreferenceKeys.h"

namespace quillmere::cli {

/// The given settings, but for the limit where `limit` is one. The option is never stored.
class LimitOption final : public UserDefaults {
public:
    /// `limit` is 1024 or 2048.
    LimitOption(UserDefaults& settings, std::optional<int> limit) : settings_(settings) {
        if (limit) index_ = *limit == 1024 ? 0 : 1;
    }

    std::int64_t integerForKey(std::string_view key) const override {
        return index_ && key == resolutionLimitIndexKey ? *index_ : settings_.integerForKey(key);
    }
    bool boolForKey(std::string_view key) const override { return settings_.boolForKey(key); }
    void setInteger(std::int64_t value, std::string_view key) override {
        settings_.setInteger(value, key);
    }
    void setBool(bool value, std::string_view key) override { settings_.setBool(value, key); }

private:
    UserDefaults& settings_;
    std::optional<std::int64_t> index_;
};

}  // namespace quillmere::cli
