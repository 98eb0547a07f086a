#pragma once

#include <map>
#include <mutex>
#include <string>

#include "Platform/UserDefaults/UserDefaults.h"
#include "Tests/Fakes/CallLog.h"

namespace quillmere {

/// Stored integers that a test can set and read while nothing else runs; calls are logged as
/// `integerForKey KEY`, `boolForKey KEY`, `setInteger VALUE KEY` and `setBool VALUE KEY`.
class FakeUserDefaults final : public UserDefaults {
public:
    explicit FakeUserDefaults(CallLog& log) : log_(log) {}

    std::int64_t integerForKey(std::string_view key) const override {
        log_.record("integerForKey " + std::string(key));
        return read(key);
    }
    bool boolForKey(std::string_view key) const override {
        log_.record("boolForKey " + std::string(key));
        return read(key) != 0;
    }
    void setInteger(std::int64_t value, std::string_view key) override {
        log_.record("setInteger " + std::to_string(value) + " " + std::string(key));
        write(value, key);
    }
    void setBool(bool value, std::string_view key) override {
        log_.record(std::string("setBool ") + (value ? "true " : "false ") + std::string(key));
        write(value ? 1 : 0, key);
    }

    std::map<std::string, std::int64_t, std::less<>> integers;  // a boolean is 0 or 1

private:
    std::int64_t read(std::string_view key) const {
        const std::lock_guard lock(mutex_);
        const auto found = integers.find(key);
        return found == integers.end() ? 0 : found->second;
    }
    void write(std::int64_t value, std::string_view key) {
        const std::lock_guard lock(mutex_);
        integers[std::string(key)] = value;
    }

    CallLog& log_;
    mutable std::mutex mutex_;
};

}  // namespace quillmere
