#include "Desktop/Localization/StringsFile.h"

#include <gtest/gtest.h>

#include "Quillmere/Models/Enhance/EnhanceStyle.h"
#include "Tests/TemporaryFolder.h"

namespace quillmere {
namespace {

TEST(StringsFile, HasATextForEveryStyleAndForAFailedConversion) {
    const auto english =
        StringsFile::read(QUILLMERE_SOURCE_DIR "/Quillmere/Resources/Strings/en.json");
    ASSERT_TRUE(english) << english.error().localizedDescription;
    for (const EnhanceStyle style : allEnhanceStyles) {
        EXPECT_NE(english->localizedString(displayKey(style)), displayKey(style));
    }
    const std::string failure = english->localizedString("FailedToConvertMessage");
    EXPECT_EQ(failure.find("%@"), failure.rfind("%@")) << "takes one value";
    EXPECT_NE(failure.find("%@"), std::string::npos);
    EXPECT_EQ(english->localizedString("no such key"), "no such key");
}

TEST(StringsFile, AFileThatIsNoTableOfTextsIsAnError) {
    const TemporaryFolder folder;
    for (const char* contents : {"", "{", "[]", "{\"a\": 1}", "null", "\"text\""}) {
        EXPECT_FALSE(StringsFile::read(folder.write("xx.json", contents))) << contents;
    }
    EXPECT_FALSE(StringsFile::read(folder / "missing.json"));
    EXPECT_TRUE(StringsFile::read(folder.write("xx.json", "{}")));
}

}  // namespace
}  // namespace quillmere
