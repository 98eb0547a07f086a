// What every implementation of `UserDefaults` owes its callers.
#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "Desktop/UserDefaults/DesktopUserDefaults.h"
#include "Tests/Fakes/FakeConsole.h"
#include "Tests/Fakes/FakeUserDefaults.h"
#include "Tests/TemporaryFolder.h"

namespace quillmere {
namespace {

class UserDefaultsContract : public testing::TestWithParam<bool> {
protected:
    UserDefaultsContract() {
        if (GetParam()) {
            userDefaults = std::make_unique<DesktopUserDefaults>(folder / "quillmere", console);
        } else {
            userDefaults = std::make_unique<FakeUserDefaults>(log);
        }
    }

    CallLog log;
    FakeConsole console{log};
    TemporaryFolder folder;
    std::unique_ptr<UserDefaults> userDefaults;
};

INSTANTIATE_TEST_SUITE_P(Both, UserDefaultsContract, testing::Values(false, true),
                         [](const auto& desktop) { return desktop.param ? "Desktop" : "Fake"; });

TEST_P(UserDefaultsContract, WhatWasNeverSetIsZeroAndFalse) {
    userDefaults->setInteger(1, "other");
    EXPECT_EQ(userDefaults->integerForKey("key"), 0);
    EXPECT_FALSE(userDefaults->boolForKey("key"));
}

TEST_P(UserDefaultsContract, GivesBackWhatWasSetLastUnderExactlyThatKey) {
    const std::string_view keys[] = {"key", "Key", "key ", "", "schlüssel", "'; DROP TABLE"};
    std::int64_t next = 0;
    for (const std::string_view key : keys) userDefaults->setInteger(++next, key);
    next = 0;
    for (const std::string_view key : keys) EXPECT_EQ(userDefaults->integerForKey(key), ++next);

    using Limits = std::numeric_limits<std::int64_t>;
    for (const std::int64_t value :
         {Limits::max(), Limits::min(), std::int64_t{-1}, std::int64_t{0}}) {
        userDefaults->setInteger(value, "key");
        EXPECT_EQ(userDefaults->integerForKey("key"), value);
    }
}

TEST_P(UserDefaultsContract, BooleansAndIntegersAreReadAsEachOther) {
    userDefaults->setBool(true, "key");
    EXPECT_EQ(userDefaults->integerForKey("key"), 1);
    userDefaults->setBool(false, "key");
    EXPECT_EQ(userDefaults->integerForKey("key"), 0);
    for (const std::int64_t value : {2, -1}) {
        userDefaults->setInteger(value, "key");
        EXPECT_TRUE(userDefaults->boolForKey("key"));
    }
    userDefaults->setInteger(0, "key");
    EXPECT_FALSE(userDefaults->boolForKey("key"));
}

TEST_P(UserDefaultsContract, ThreadsMayReadAndWriteAtOnce) {
    constexpr int writers = 3, rounds = 40;
    std::vector<std::thread> threads;
    for (int writer = 0; writer < writers; ++writer) {
        threads.emplace_back([this, writer] {
            const std::string own = "own" + std::to_string(writer);
            for (int round = 1; round <= rounds; ++round) {
                userDefaults->setInteger(round, own);
                EXPECT_EQ(userDefaults->integerForKey(own), round);
                (void)userDefaults->boolForKey("own0");
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    for (int writer = 0; writer < writers; ++writer) {
        EXPECT_EQ(userDefaults->integerForKey("own" + std::to_string(writer)), rounds);
    }
}

}  // namespace
}  // namespace quillmere
