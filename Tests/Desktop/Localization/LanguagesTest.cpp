// The application's languages: which one is chosen, and that none of them lacks anything.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>
#include <regex>

#include "Base/FormatString.h"
#include "Desktop/Localization/PseudoLanguage.h"
#include "Desktop/Localization/UserLanguage.h"

namespace quillmere {
namespace {

using Texts = std::map<std::string, std::string>;
namespace fs = std::filesystem;

const fs::path folder = QUILLMERE_SOURCE_DIR "/Quillmere/Resources/Strings";

Texts textsIn(std::string_view language) {
    std::ifstream file(folder / (std::string(language) + ".json"));
    std::map<std::string, int> count;
    const auto countKeys = [&](int, nlohmann::json::parse_event_t event,
                               const nlohmann::json& value) {
        if (event == nlohmann::json::parse_event_t::key) ++count[value.get<std::string>()];
        return true;
    };
    const Texts texts = nlohmann::json::parse(file, countKeys).get<Texts>();
    for (const auto& [key, times] : count) EXPECT_EQ(times, 1) << language << ": " << key;
    return texts;
}

/// By number, so that a language may put them in an order of its own.
std::multiset<std::string> placeholdersOf(const std::string& text) {
    std::multiset<std::string> found;
    int next = 1;
    const std::regex placeholder("%(?:([1-9])\\$)?@");
    for (std::sregex_iterator at(text.begin(), text.end(), placeholder), end; at != end; ++at) {
        found.insert((*at)[1].matched ? (*at)[1].str() : std::to_string(next++));
    }
    return found;
}

void expectTheSameTexts(std::string_view language, const Texts& texts) {
    for (const auto& [key, english] : textsIn("en")) {
        const auto found = texts.find(key);
        ASSERT_NE(found, texts.end()) << language << " lacks " << key;
        const std::string& text = found->second;
        EXPECT_NE(text.find_first_not_of(" \n"), std::string::npos) << language << ": " << key;
        EXPECT_EQ(placeholdersOf(text), placeholdersOf(english)) << language << ": " << text;
        // Another text may follow where the English one ends with a blank.
        EXPECT_TRUE(english.back() != ' ' || text.back() == ' ' || text.ends_with("。") ||
                    language == pseudoLanguage)
            << language << ": " << text;
    }
    EXPECT_EQ(texts.size(), textsIn("en").size()) << language << " has keys that English lacks";
}

TEST(Languages, EachHasTheKeysAndThePlaceholdersOfEnglish) {
    std::vector<std::string> files;
    for (const auto& file : fs::directory_iterator(folder)) files.push_back(file.path().stem());
    EXPECT_THAT(files, testing::UnorderedElementsAreArray(languages));
    for (const std::string_view language : languages) {
        expectTheSameTexts(language, textsIn(language));
    }
    Texts pseudo = textsIn("en");
    for (auto& [key, text] : pseudo) text = pseudolocalized(text);
    expectTheSameTexts(pseudoLanguage, pseudo);
}

TEST(Languages, ThePseudoLanguageIsLongerAndKeepsWhatIsFilledIn) {
    EXPECT_EQ(formatString(pseudolocalized("Add (%@)"), {"7"}), "\u200f[Ådd (7) Ådd ]");
    EXPECT_EQ(pseudolocalized("%2$@ %1$@"), "\u200f[%2$@ %1$@  ]");
}

TEST(Languages, TheBestOfThoseThatAUserReadsIsChosen) {
    const std::pair<const char*, const char*> cases[] = {
        {"", "en"},
        {"C", "en"},
        {"POSIX", "en"},
        {"de", "de"},
        {"de_AT.UTF-8@euro", "de"},
        {"fr-CA", "fr"},
        {"ja_JP.eucJP", "ja"},
        {"es_419", "es"},
        {"zh", "zh-Hans"},
        {"zh_CN.GB18030", "zh-Hans"},
        {"zh_SG", "zh-Hans"},
        {"zh-Hans-HK", "zh-Hans"},
        {"zh_TW", "en"},
        {"zh-Hant:ja", "ja"},
        {"pt_BR:es:en", "es"},
        {"en_GB:de", "en"},
        {":xx::fr", "fr"},
        {"qps-plocm", "qps-plocm"},
        {"den", "en"},
        {"_", "en"},
    };
    for (const auto& [locales, language] : cases) {
        EXPECT_EQ(bestLanguage(locales), language) << locales;
    }
}

TEST(Languages, TheVariablesOfTheSystemAreAskedInTheirOrder) {
    const std::array names{"QUILLMERE_LANGUAGE", "LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"};
    const std::pair<std::array<const char*, 5>, const char*> cases[] = {
        {{"", "", "", "", ""}, "en"},
        {{"", "", "", "", "de_DE.UTF-8"}, "de"},
        {{"", "", "", "fr_FR", "de_DE"}, "fr"},
        {{"", "", "ja_JP", "fr_FR", "de_DE"}, "ja"},
        {{"", "xx:es", "ja_JP", "fr_FR", "de_DE"}, "es"},
        {{"", "xx", "", "", "de_DE"}, "de"},
        {{"", "es", "C.UTF-8", "", "de_DE"}, "en"},
        {{"fr", "es", "C", "", "de_DE"}, "fr"},
    };
    for (const auto& [values, language] : cases) {
        for (std::size_t i = 0; i < names.size(); ++i) setenv(names[i], values[i], 1);
        EXPECT_EQ(userLanguage(), language);
    }
    for (const char* name : names) unsetenv(name);
}

}  // namespace
}  // namespace quillmere
