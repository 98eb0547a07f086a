// Sentences in the sources that no language has a text for: an error of an adapter or of the
// command line is made in English, and its sentence is the key of its translations.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>
#include <string>

#include "Desktop/Localization/StringsFile.h"
#include "Desktop/Localization/UserLanguage.h"
#include "Quillmere/Models/Services/LocalizedReason.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;

const fs::path root = QUILLMERE_SOURCE_DIR;

/// The string literals of a file, those that stand one after the other as one.
std::vector<std::string> literalsIn(const fs::path& file) {
    std::ifstream stream(file);
    const std::string code{std::istreambuf_iterator<char>(stream), {}};
    const std::regex token(
        "//[^\n]*|#include[^\n]*|'(?:[^'\\\\]|\\\\.)'|\"((?:[^\"\\\\\n]|\\\\.)*)\"");
    std::vector<std::string> literals;
    auto lastEnd = code.cend();
    for (std::sregex_iterator at(code.begin(), code.end(), token), end; at != end; ++at) {
        if (!(*at)[1].matched) continue;
        const std::string text = std::regex_replace((*at)[1].str(), std::regex("\\\\\""), "\"");
        const bool continues =
            lastEnd < (*at)[0].first &&
            std::all_of(lastEnd, (*at)[0].first, [](unsigned char c) { return std::isspace(c); });
        continues ? literals.back() += text : literals.emplace_back(text);
        lastEnd = (*at)[0].second;
    }
    return literals;
}

/// By the file that has them.
std::multimap<std::string, std::string> literalsOf(const std::vector<std::string>& rooms) {
    std::multimap<std::string, std::string> literals;
    for (const std::string& room : rooms) {
        for (const auto& entry : fs::recursive_directory_iterator(root / room)) {
            const std::string extension = entry.path().extension();
            if (extension != ".h" && extension != ".cpp") continue;
            const std::string name = fs::relative(entry.path(), root);
            for (std::string& text : literalsIn(entry.path())) {
                literals.emplace(name, std::move(text));
            }
        }
    }
    return literals;
}

std::map<std::string, std::string> english() {
    std::ifstream file(root / "Quillmere/Resources/Strings/en.json");
    return nlohmann::json::parse(file).get<std::map<std::string, std::string>>();
}

/// Files whose sentences no user of the application can have in another language: without its
/// resources there are no texts, and the project's settings are read by whoever makes an edition.
const std::set<std::string> withoutTexts{"Desktop/Localization/StringsFile.cpp",
                                         "Desktop/Application/ResourceBundle.cpp",
                                         "Desktop/Application/ProjectSettingsFile.cpp"};

TEST(ErrorTexts, EachSentenceOfAnAdapterAndOfTheCommandLineIsAKey) {
    const auto texts = english();
    const std::regex sentence("(?:%@|[A-Z]).* .*\\.");
    const std::regex piece("[A-Z].* .*[^:] |[ ;].*[^ ]+ [^ ]+\\.");
    int sentences = 0;
    for (const auto& [file, text] : literalsOf({"Desktop", "CommandLine"})) {
        if (withoutTexts.contains(file)) continue;
        EXPECT_FALSE(std::regex_match(text, piece))
            << file << ": a piece of a sentence can't be translated; use %@: " << text;
        if (!std::regex_match(text, sentence)) continue;
        ++sentences;
        EXPECT_TRUE(texts.contains(text)) << file << " says what no language has: " << text;
    }
    EXPECT_GT(sentences, 100) << "the sources are not understood any more";
}

TEST(ErrorTexts, EachSentenceThatIsAKeyIsSaidSomewhere) {
    std::set<std::string> said;
    for (const auto& [file, text] : literalsOf({"Quillmere", "Desktop", "CommandLine"})) {
        said.insert(text);
    }
    for (const auto& [key, text] : english()) {
        EXPECT_TRUE(said.contains(key) || key.find(' ') == std::string::npos) << key;
    }
}

TEST(ErrorTexts, AnErrorIsToldInEachLanguageWithWhatItIsAbout) {
    const Error errors[] = {
        {"NSPOSIXErrorDomain", 2, "The file %@ can't be read: %@.", {"/a%@b", "100%%"}},
        {"PHPhotosErrorDomain", 3302, "The picture is damaged and is not saved."},
        {"quillmere.neural", 1, "The file /a can't be read: gone."},
        {"quillmere.neural", 2, "The network's graph has loops."},
        {"quillmere.neural", 3, "The network was compiled for another version."},
        {"quillmere.neural", 4, "The layer is unknown."},
        {"quillmere.neural", 5, "An empty image can't be enlarged."},
        {"quillmere.neural", 6, "There is not enough memory to load the network."},
    };
    for (const std::string_view language : languages) {
        const auto texts = StringsFile::read(root / "Quillmere/Resources/Strings" /
                                             (std::string(language) + ".json"));
        ASSERT_TRUE(texts);
        for (const Error& error : errors) {
            const std::string told = localizedReason(error, *texts);
            const bool mayBeTheSame = language == "en" && error.domain != "quillmere.neural";
            EXPECT_EQ(told == error.localizedDescription, mayBeTheSame) << language << ": " << told;
            for (const std::string& value : error.values) {
                EXPECT_NE(told.find(value), std::string::npos) << language << ": " << told;
            }
        }
        const Error foreign{"another.library", 7, "Schon übersetzt: 5 %@."};
        EXPECT_EQ(localizedReason(foreign, *texts), foreign.localizedDescription);
    }
}

}  // namespace
}  // namespace quillmere
