#include "Desktop/Application/ProjectSettingsFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Desktop/FileManager/DesktopFileManager.h"
#include "Tests/Fakes/FakeConsole.h"
#include "Tests/TemporaryFolder.h"

namespace quillmere {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class ProjectSettingsFile : public testing::Test {
protected:
    ProjectSettings read(const std::string& contents) {
        return readProjectSettings(files, folder.write("settings.json", contents), console);
    }

    const std::string device = "0123456789abcdefABCDEF0123456789";
    TemporaryFolder folder;
    DesktopFileManager files;
    CallLog log;
    FakeConsole console{log};
};

TEST_F(ProjectSettingsFile, TheOneThatIsShippedIsRightAndAsksNoServer) {
    const ProjectSettings shipped = readProjectSettings(
        files, QUILLMERE_SOURCE_DIR "/Quillmere/Resources/ProjectSettings.json", console);
    EXPECT_THAT(log.lines(), IsEmpty());
    EXPECT_EQ(shipped.remoteConfigEndpoint, "");
    EXPECT_EQ(shipped.inquiryEndpoint, "");
    EXPECT_EQ(shipped.ads, AdSource::none);
    EXPECT_THAT(shipped.inquiryTitle, SizeIs(12));
    EXPECT_THAT(shipped.inquiryKey, SizeIs(40));
}

TEST_F(ProjectSettingsFile, EverySettingReachesItsField) {
    const ProjectSettings expected{"https://a.example/values?x=1",
                                   "https://b.example:444/stage",
                                   "お問合せ",
                                   "key",
                                   "help@c.example",
                                   "https://d.example/app",
                                   "https://e.example/maker",
                                   "https://f.example/review",
                                   AdSource::house,
                                   "ad-app~1",
                                   "unit/open",
                                   "unit/conversion",
                                   "unit/save",
                                   "unit/banner",
                                   {device, device}};
    EXPECT_EQ(read(R"({"remoteConfigEndpoint": "https://a.example/values?x=1",
                       "inquiryEndpoint": "https://b.example:444/stage",
                       "inquiryTitle": "お問合せ", "inquiryKey": "key",
                       "supportAddress": "help@c.example", "storeLink": "https://d.example/app",
                       "makerStorePage": "https://e.example/maker",
                       "reviewLink": "https://f.example/review",
                       "ads": "house", "adApplicationIdentifier": "ad-app~1", "appOpenAdUnit": "unit/open",
                       "conversionAdUnit": "unit/conversion", "saveAdUnit": "unit/save",
                       "bannerAdUnit": "unit/banner", "testDeviceIdentifiers": [")" +
                   device + R"(", ")" + device + R"("]})"),
              expected);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(ProjectSettingsFile, WhatIsMissingIsEmptyAndNeedsNoWord) {
    EXPECT_EQ(read("{}"), ProjectSettings());
    EXPECT_EQ(read(R"({"storeLink": "", "testDeviceIdentifiers": []})"), ProjectSettings());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(ProjectSettingsFile, AWrongSettingIsToldAndIgnoredAndTheRestIsTaken) {
    const std::pair<const char*, const char*> cases[] = {
        {"remoteConfigEndpoint", "1"},
        {"remoteConfigEndpoint", "null"},
        {"remoteConfigEndpoint", "[\"https://a.example\"]"},
        {"remoteConfigEndpoint", "\"http://a.example\""},
        {"remoteConfigEndpoint", "\"http://localhost.a.example\""},
        {"remoteConfigEndpoint", "\"http://127.0.0.1:80@a.example\""},
        {"remoteConfigEndpoint", "\"https://\""},
        {"remoteConfigEndpoint", "\"https://a.example/ b\""},
        {"remoteConfigEndpoint", "\"file:///etc/passwd\""},
        {"inquiryEndpoint", "\"https://a.example/\""},
        {"inquiryEndpoint", "\"https://a.example?b\""},
        {"inquiryTitle", "{}"},
        {"inquiryKey", "\"a\\r\\nb: c\""},
        {"supportAddress", "\"nobody\""},
        {"supportAddress", "\"a@b@c\""},
        {"supportAddress", "\"@b\""},
        {"storeLink", "\"javascript:alert(1)\""},
        {"saveAdUnit", "true"},
        {"ads", "\"everywhere\""},
        {"ads", "\"\""},
        {"ads", "true"},
        {"testDeviceIdentifiers", "\"0123456789abcdef0123456789abcdef\""},
        {"testDeviceIdentifiers", "[\"0123\"]"},
        {"testDeviceIdentifiers", "[\"0123456789abcdef0123456789abcdeg\"]"},
        {"testDeviceIdentifiers", "[1]"},
        {"StoreLink", "\"https://a.example\""},
    };
    for (const auto& [name, value] : cases) {
        const std::size_t before = log.lines().size();
        ProjectSettings rest;
        rest.reviewLink = "https://f.example";
        EXPECT_EQ(read(std::string("{\"") + name + "\": " + value +
                       R"(, "reviewLink": "https://f.example"})"),
                  rest)
            << name << ": " << value;
        ASSERT_THAT(log.lines(), SizeIs(before + 1)) << name << ": " << value;
        EXPECT_THAT(log.lines().back(), AllOf(HasSubstr(name), HasSubstr("settings.json")));
    }
}

TEST_F(ProjectSettingsFile, AServerOnThisMachineMayGoWithoutTLS) {
    for (const std::string server :
         {"http://127.0.0.1:8000", "http://localhost", "http://[::1]:1"}) {
        EXPECT_EQ(read("{\"inquiryEndpoint\": \"" + server + "\"}").inquiryEndpoint, server);
    }
}

TEST_F(ProjectSettingsFile, AFileThatCannotBeReadLeavesEverySettingEmpty) {
    for (const char* contents :
         {"", "{", "[]", "null", "{\"storeLink\": \"https://a.example\"", "\xff"}) {
        EXPECT_EQ(read(contents), ProjectSettings()) << contents;
    }
    EXPECT_EQ(readProjectSettings(files, folder / "missing.json", console), ProjectSettings());
    EXPECT_EQ(readProjectSettings(files, folder.path(), console), ProjectSettings()) << "a folder";
    EXPECT_THAT(log.lines(), SizeIs(8));
    EXPECT_THAT(log.lines().back(), HasSubstr(folder.path().string()));
}

}  // namespace
}  // namespace quillmere
