// The user's choices and counters in a file of the user's data folder.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "Base/Result.h"
#include "Platform/Application/Console.h"
#include "Platform/UserDefaults/UserDefaults.h"

namespace quillmere {

class SettingsStore;

/// `Settings.sqlite` in the given folder, which the application and the command line may use at
/// once. It is opened at the first touch and made at the first write.
///
/// A value that the file doesn't take (a full disk, a folder that refuses writing) lives in memory
/// until this object goes or the same key is set again; the console is told once. A damaged file is
/// moved aside with a line on the console.
class DesktopUserDefaults final : public UserDefaults {
public:
    /// Without a folder, all values live in memory.
    DesktopUserDefaults(std::optional<std::filesystem::path> folder, Console& console);
    ~DesktopUserDefaults() override;

    std::int64_t integerForKey(std::string_view key) const override;
    bool boolForKey(std::string_view key) const override;
    void setInteger(std::int64_t value, std::string_view key) override;
    void setBool(bool value, std::string_view key) override;

    /// Whether the disk has the last value of every key that was set here.
    bool isStored() const;

private:
    Result<void> openStore() const;
    template <class Operation>
    auto onStore(const Operation& operation) const;
    void complain(const Error& error) const;

    const std::optional<std::filesystem::path> file_;
    Console& console_;
    mutable std::mutex mutex_;
    mutable std::unique_ptr<SettingsStore> store_;
    mutable bool complained_ = false;
    std::map<std::string, std::int64_t, std::less<>> unstored_;
};

}  // namespace quillmere
