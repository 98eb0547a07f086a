// What the stored numbers mean.
#include <gtest/gtest.h>

#include <limits>

#include "Quillmere/Models/Services/PreferenceCounter.h"
#include "Quillmere/Models/Services/PreferenceKeys.h"
#include "Quillmere/Models/Services/ResolutionLimit.h"
#include "Quillmere/Models/Services/UserDefaultsHelper.h"
#include "Tests/Fakes/FakeUserDefaults.h"

namespace quillmere {
namespace {

using ImageFormat = UserDefaultsHelper::ImageFormat;

class Preferences : public testing::Test {
protected:
    CallLog log;
    FakeUserDefaults userDefaults{log};
};

// These texts and numbers lie on users' disks.
TEST_F(Preferences, WhatEarlierVersionsStoredIsStillFound) {
    userDefaults.integers = {{"imageFormatKey", 2}, {"resolutionLimitIndexKey", 1}};
    EXPECT_EQ(UserDefaultsHelper::imageFormat(userDefaults), ImageFormat::png);
    EXPECT_EQ(resolutionLimit(userDefaults), 2048);
    const std::pair<std::string_view, std::string_view> others[] = {
        {preserveCreationDateKey, "preserveCreationDateKey"},
        {preserveLocationKey, "preserveLocationKey"},
        {reviewCountKey, "reviewCountKey"},
        {enableCropKey, "enableCropKey"},
        {launchCountKey, "launchCountKey"},
    };
    for (const auto& [key, text] : others) EXPECT_EQ(key, text);
}

TEST_F(Preferences, AStoredNumberThatIsNoFormatReadsAsJPEGAndIsNotRepaired) {
    EXPECT_EQ(UserDefaultsHelper::imageFormat(userDefaults), ImageFormat::jpg);
    const std::pair<std::int64_t, ImageFormat> cases[] = {
        {0, ImageFormat::jpg}, {1, ImageFormat::heic}, {2, ImageFormat::png},
        {3, ImageFormat::jpg}, {-1, ImageFormat::jpg}, {std::int64_t{1} << 32, ImageFormat::jpg},
    };
    for (const auto& [stored, expected] : cases) {
        userDefaults.integers["imageFormatKey"] = stored;
        EXPECT_EQ(UserDefaultsHelper::imageFormat(userDefaults), expected) << stored;
        EXPECT_EQ(userDefaults.integers["imageFormatKey"], stored);
    }
    EXPECT_FALSE(UserDefaultsHelper::imageFormatWithRawValue(3));
    EXPECT_FALSE(UserDefaultsHelper::imageFormatWithRawValue(-1));
}

TEST_F(Preferences, OnlyZeroIsTheLowLimit) {
    EXPECT_EQ(resolutionLimit(userDefaults), 1024);
    for (const std::int64_t stored : {1, 5, -1}) {
        userDefaults.integers["resolutionLimitIndexKey"] = stored;
        EXPECT_EQ(resolutionLimit(userDefaults), 2048) << stored;
    }
}

TEST_F(Preferences, ACounterGoesOnFromWhatIsStored) {
    incrementCounter(userDefaults, launchCountKey);
    EXPECT_EQ(userDefaults.integers["launchCountKey"], 1);
    userDefaults.integers["launchCountKey"] = 41;
    incrementCounter(userDefaults, launchCountKey);
    EXPECT_EQ(userDefaults.integers["launchCountKey"], 42);
    EXPECT_FALSE(userDefaults.integers.contains("reviewCountKey"));
}

TEST_F(Preferences, ACounterNeverWrapsAround) {
    userDefaults.integers["reviewCountKey"] = std::numeric_limits<std::int64_t>::max();
    EXPECT_DEATH(incrementCounter(userDefaults, reviewCountKey), "");
}

}  // namespace
}  // namespace quillmere
