#include "Desktop/RemoteConfig/ConfigValues.h"

#include <gtest/gtest.h>

#include <limits>

#include "Desktop/FileManager/DesktopFileManager.h"
#include "Desktop/RemoteConfig/PropertyList.h"

namespace quillmere {
namespace {

constexpr auto source = RemoteConfigSource::remote;
constexpr auto largest = std::numeric_limits<std::int64_t>::max();
constexpr auto smallest = std::numeric_limits<std::int64_t>::min();

TEST(ConfigValues, EachKindCanBeReadInEachWay) {
    const std::pair<ConfigValue, RemoteConfigValue> cases[] = {
        {true, {"true", true, 1, 1, source}},
        {false, {"false", false, 0, 0, source}},
        {5.0, {"5", true, 5, 5, source}},
        {0.0, {"0", false, 0, 0, source}},
        {-2.5, {"-2.5", true, -2.5, -2, source}},
        {1e300, {"1e+300", true, 1e300, largest, source}},
        {-1e300, {"-1e+300", true, -1e300, smallest, source}},
        {9223372036854775808.0,
         {"9223372036854775808", true, 9223372036854775808.0, largest, source}},
        {"7.9", {"7.9", false, 7.9, 7, source}},
        {"1", {"1", true, 1, 1, source}},
        {"YES", {"YES", true, 0, 0, source}},
        {"True", {"True", true, 0, 0, source}},
        {"no", {"no", false, 0, 0, source}},
        {"7 apples", {"7 apples", false, 0, 0, source}},
        {"nan", {"nan", false, 0, 0, source}},
        {"1e999", {"1e999", false, 0, 0, source}},
        {"", {"", false, 0, 0, source}},
    };
    for (const auto& [value, expected] : cases) {
        EXPECT_EQ(remoteConfigValue(value, source), expected) << expected.stringValue;
    }
}

std::optional<ConfigValues> fromPropertyList(const std::string& xml) {
    return configValuesFromPropertyList(std::as_bytes(std::span(xml)));
}

TEST(ConfigValues, APropertyListGivesItsBooleansNumbersAndTexts) {
    const auto values = fromPropertyList(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\"><dict>"
        "<key>a</key><true/><key>b</key><integer>-3</integer><key>c</key><real>0.5</real>"
        "<key>d</key><string>&lt;\xE3\x81\x82</string><key>e</key><array><true/></array>"
        "<key>f</key><string/></dict></plist>");
    ASSERT_TRUE(values);
    EXPECT_EQ(
        *values,
        (ConfigValues{{"a", true}, {"b", -3.0}, {"c", 0.5}, {"d", "<\xE3\x81\x82"}, {"f", ""}}));
}

TEST(ConfigValues, WhatIsNoPropertyListOfKeysGivesNothing) {
    for (const char* xml : {"", "garbage", "<plist><dict><key>a</key>", "<plist><array/></plist>",
                            "<plist><dict><true/></dict></plist>", "<html></html>"}) {
        EXPECT_FALSE(fromPropertyList(xml)) << xml;
    }
}

TEST(ConfigValues, TheShippedDefaultsHaveEveryKeyInItsKind) {
    DesktopFileManager files;
    const auto contents = files.contentsOfFile(QUILLMERE_SOURCE_DIR
                                               "/Quillmere/Resources/RemoteConfigDefaults.plist");
    ASSERT_TRUE(contents);
    const auto values = configValuesFromPropertyList(*contents);
    ASSERT_TRUE(values);
    ASSERT_EQ(values->size(), 4u);
    EXPECT_TRUE(std::holds_alternative<bool>(values->at("showCollapsibleBanner")));
    EXPECT_TRUE(std::holds_alternative<double>(values->at("convertAdDisplayThreshold")));
    EXPECT_TRUE(std::holds_alternative<bool>(values->at("showEnhancedShareView")));
    EXPECT_TRUE(std::holds_alternative<bool>(values->at("enableWarmUp")));
}

}  // namespace
}  // namespace quillmere
