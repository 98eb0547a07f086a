#include "CommandLine/Options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <limits>

#include "CommandLine/LimitOption.h"
#include "CommandLine/ProgressLine.h"
#include "Quillmere/Models/Services/ResolutionLimit.h"
#include "Tests/Fakes/FakeUserDefaults.h"

namespace quillmere::cli {
namespace {

using testing::HasSubstr;

Command parse(std::vector<const char*> arguments) {
    arguments.insert(arguments.begin(), "quillmere-cli");
    return parseArguments(static_cast<int>(arguments.size()), arguments.data());
}

TEST(Options, DefaultsNeedNoManual) {
    const auto options = std::get<EnhanceOptions>(parse({"enhance", "a.png"}));
    EXPECT_EQ(options.inputs, std::vector<std::filesystem::path>{"a.png"});
    EXPECT_FALSE(options.output);
    EXPECT_EQ(options.style, EnhanceStyle::high);
    EXPECT_FALSE(options.format);
    EXPECT_FALSE(options.limit);
    EXPECT_FALSE(options.force || options.json || options.quiet);
}

TEST(Options, TakesEveryOptionInAnyOrder) {
    const auto options = std::get<EnhanceOptions>(
        parse({"enhance", "--quiet", "a.png", "--style", "speedAnime", "-o", "b.heic", "--limit",
               "2048", "--force", "--json", "--format", "heic"}));
    EXPECT_EQ(options.style, EnhanceStyle::speedAnime);
    EXPECT_EQ(options.output, "b.heic");
    EXPECT_EQ(options.format, PictureFormat::heic);
    EXPECT_EQ(options.limit, 2048);
    EXPECT_TRUE(options.force && options.json && options.quiet);
}

TEST(Options, WrongUseIsTold) {
    struct Case {
        std::vector<const char*> arguments;
        const char* says;
    };
    const Case cases[] = {
        {{}, "subcommand"},
        {{"enlarge", "a.png"}, "enlarge"},
        {{"enhance"}, "INPUT"},
        {{"enhance", "a.png", "--style", "huge"}, "huge"},
        {{"enhance", "a.png", "--style", "rapidHQ"}, "for videos"},
        {{"enhance", "a.png", "--limit", "512"}, "512"},
        {{"enhance", "a.png", "--format", "gif"}, "gif"},
        {{"enhance", "a.png", "-o", "b.webp"}, "can't write .webp"},
        {{"enhance", "a.png", "-o", "b.png", "--format", "jpg"}, "different formats"},
        {{"enhance", "a.png", "b.png", "-o", "no-such-folder"}, "no folder"},
        {{"enhance", "a.png", "-o", "no-such-folder/"}, "no folder"},
        {{"enhance", "a.png", "--unknown"}, "--unknown"},
        {{"styles", "extra"}, "extra"},
        {{"settings", "noSuchKey"}, "no setting noSuchKey; there are: enableCropKey, "},
        {{"settings", "noSuchKey", "1"}, "no setting noSuchKey"},
        {{"settings", ""}, "no setting"},
        {{"settings", "imageFormatKey", "gif"}, "can't be \"gif\"; it takes: jpg, heic, png"},
        {{"settings", "imageFormatKey", "1"}, "can't be"},
        {{"settings", "imageFormatKey", ""}, "can't be"},
        {{"settings", "resolutionLimitIndexKey", "1"}, "1024, 2048"},
        {{"settings", "enableCropKey", "yes"}, "true, false"},
        {{"settings", "launchCountKey", "-1"}, "0, 1, 2"},
        {{"settings", "launchCountKey", "1.5"}, "0, 1, 2"},
        {{"settings", "launchCountKey", "9223372036854775808"}, "0, 1, 2"},
        {{"settings", "launchCountKey", "1", "2"}, "2"},
    };
    for (const Case& c : cases) {
        const Command command = parse(c.arguments);
        const auto* error = std::get_if<Error>(&command);
        ASSERT_TRUE(error) << c.says;
        EXPECT_THAT(error->localizedDescription, HasSubstr(c.says));
    }
}

TEST(Options, ASettingTakesAValueOfItsKind) {
    const auto all = std::get<SettingsOptions>(parse({"settings", "--json"}));
    EXPECT_TRUE(all.json && !all.setting && !all.value);
    const auto read = std::get<SettingsOptions>(parse({"settings", "launchCountKey"}));
    EXPECT_TRUE(read.setting && !read.value && !read.json);

    const struct {
        const char *key, *text;
        SettingValue expected;
    } cases[] = {
        {"imageFormatKey", "png", std::string("png")},
        {"resolutionLimitIndexKey", "2048", std::int64_t{2048}},
        {"preserveLocationKey", "true", true},
        {"enableCropKey", "false", false},
        {"reviewCountKey", "0", std::int64_t{0}},
        {"launchCountKey", "9223372036854775807", std::numeric_limits<std::int64_t>::max()},
    };
    for (const auto& c : cases) {
        const auto options = std::get<SettingsOptions>(parse({"settings", c.key, c.text}));
        ASSERT_TRUE(options.setting) << c.key;
        EXPECT_EQ(options.setting->key, c.key);
        EXPECT_EQ(options.value, c.expected) << c.key;
    }
}

TEST(Options, HelpAndVersionSucceed) {
    for (const auto& [argument, says] : {std::pair{"--help", "enhance"}, {"--version", "0."}}) {
        const auto message = std::get<Message>(parse({argument}));
        EXPECT_THAT(message.text, HasSubstr(says));
    }
    EXPECT_THAT(std::get<Message>(parse({"enhance", "--help"})).text, HasSubstr("--limit"));
}

TEST(LimitOption, WinsOverTheStoredLimitAndLeavesEverythingElse) {
    CallLog log;
    FakeUserDefaults stored(log);
    for (const int index : {0, 1}) {
        stored.integers = {{"resolutionLimitIndexKey", index}, {"imageFormatKey", 2}};
        const double storedLimit = index == 0 ? 1024 : 2048;
        EXPECT_EQ(resolutionLimit(LimitOption(stored, std::nullopt)), storedLimit);
        for (const int limit : {1024, 2048}) {
            const LimitOption option(stored, limit);
            EXPECT_EQ(resolutionLimit(option), limit);
            EXPECT_EQ(option.integerForKey("imageFormatKey"), 2);
        }
        EXPECT_EQ(resolutionLimit(stored), storedLimit) << "the option was stored";
    }
}

TEST(ProgressText, TellsTheTimeLeftOnceItIsKnown) {
    using namespace std::chrono_literals;
    EXPECT_EQ(progressText("cat.jpg", 0, 9s), "cat.jpg [------------------------] 0 %");
    EXPECT_EQ(progressText("cat.jpg", 0.25f, 10s),
              "cat.jpg [######------------------] 25 %, 30 s left");
    EXPECT_EQ(progressText("cat.jpg", 0.5f, 100s),
              "cat.jpg [############------------] 50 %, 2 min left");
    EXPECT_EQ(progressText("cat.jpg", 1, 10s), "cat.jpg [########################] 100 %");
}

TEST(ProgressText, KeepsLongAndHostileNamesToALine) {
    using namespace std::chrono_literals;
    EXPECT_THAT(progressText("a\x1b[2Jb\n", 0, 0s), testing::StartsWith("a?[2Jb? ["));
    const std::string wide(50, 'x');
    EXPECT_THAT(progressText(wide, 0, 0s), testing::StartsWith(wide.substr(0, 24) + "… ["));
    EXPECT_THAT(progressText("ääääääääääääääääääääääääää", 0, 0s),
                testing::StartsWith("ääääääääääääääääääääääää… ["));
}

}  // namespace
}  // namespace quillmere::cli
