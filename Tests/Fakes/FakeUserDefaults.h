#pragma once

#include <map>
#include <string>

#include "Platform/UserDefaults/UserDefaults.h"
#include "Tests/Fakes/CallLog.h"

namespace quillmere {

/// Stored integers that a test can set; reads are logged.
class FakeUserDefaults final : public UserDefaults {
public:
    explicit FakeUserDefaults(CallLog& log) : log_(log) {}

    std::int64_t integerForKey(std::string_view key) const override {
        log_.record("integerForKey " + std::string(key));
        const auto found = integers.find(std::string(key));
        return found == integers.end() ? 0 : found->second;
    }

    std::map<std::string, std::int64_t> integers;

private:
    CallLog& log_;
};

}  // namespace quillmere
