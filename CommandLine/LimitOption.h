// The option `--limit` in the place of the stored choice, for one run.
#pragma once

#include "Platform/UserDefaults/UserDefaults.h"

namespace quillmere::cli {

class LimitOption final : public UserDefaults {
public:
    explicit LimitOption(int limit) : index_(limit == 1024 ? 0 : 1) {}

    std::int64_t integerForKey(std::string_view key) const override {
        return key == "resolutionLimitIndexKey" ? index_ : 0;
    }
    bool boolForKey(std::string_view key) const override { return integerForKey(key) != 0; }
    // Nothing else is stored for the command line.
    void setInteger(std::int64_t, std::string_view) override {}
    void setBool(bool, std::string_view) override {}

private:
    std::int64_t index_;
};

}  // namespace quillmere::cli
