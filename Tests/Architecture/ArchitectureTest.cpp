// The house as `ARCHITECTURE.md` tells it: every path exists, and no file includes what its room
// must not know.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace quillmere {
namespace {

namespace fs = std::filesystem;

const fs::path root = QUILLMERE_SOURCE_DIR;

std::string contentsOf(const fs::path& file) {
    std::ifstream stream(file);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}

std::vector<std::string> matchesOf(const std::string& text, const std::regex& pattern) {
    std::vector<std::string> found;
    for (std::sregex_iterator match(text.begin(), text.end(), pattern), end; match != end;
         ++match) {
        found.push_back((*match)[1]);
    }
    return found;
}

/// Each .h and .cpp of the rooms, relative to the root.
std::vector<fs::path> sources(const std::vector<std::string>& rooms) {
    std::vector<fs::path> found;
    for (const std::string& room : rooms) {
        for (const auto& entry : fs::recursive_directory_iterator(root / room)) {
            const fs::path& path = entry.path();
            if (path.extension() == ".h" || path.extension() == ".cpp") {
                found.push_back(fs::relative(path, root));
            }
        }
    }
    return found;
}

bool liesUnder(const fs::path& file, const std::string& room) {
    return file.string().starts_with(room);
}

TEST(Architecture, EveryPathThatThePageNamesExists) {
    const std::string page = contentsOf(root / "ARCHITECTURE.md");
    ASSERT_FALSE(page.empty()) << "ARCHITECTURE.md is missing";
    int paths = 0;
    for (const std::string& name : matchesOf(page, std::regex("`([^`\n]+)`"))) {
        const bool isPath = name.find('/') != std::string::npos &&
                            name.find_first_of(" <>*()") == std::string::npos;
        if (!isPath) continue;
        ++paths;
        EXPECT_TRUE(fs::exists(root / name)) << name;
    }
    EXPECT_GT(paths, 20) << "the page names no paths any more";
}

/// A room, and the rooms that it may include, by the beginning of the path. The first row that
/// fits a file counts.
struct Knows {
    std::string room;
    std::vector<std::string> rooms;
};

const std::vector<std::string> logic = {"Quillmere/", "Platform/", "Base/"};
const std::vector<std::string> adapters = {"Desktop/", "Quillmere/", "Platform/", "Base/"};
const std::vector<std::string> networks = {"Desktop/", "Quillmere/", "Platform/", "Base/",
                                           "Neural/"};

const Knows mayKnow[] = {
    {"Base/", {"Base/"}},
    {"Platform/", {"Platform/", "Base/"}},
    {"Quillmere/Models/", {"Quillmere/Models/", "Platform/", "Base/"}},
    {"Quillmere/", logic},
    {"Neural/", {"Neural/", "Base/"}},
    {"Desktop/CoreML/", networks},
    {"Desktop/Vision/", networks},
    {"Desktop/DesktopPlatform.h", networks},
    {"Desktop/", adapters},
    {"CommandLine/", {"CommandLine/", "Desktop/", "Quillmere/", "Platform/", "Base/"}},
};

TEST(Architecture, NoFileIncludesARoomThatItMustNotKnow) {
    const std::regex include("#include \"([^\"]+)\"");
    for (const fs::path& file :
         sources({"Base", "Platform", "Quillmere", "Neural", "Desktop", "CommandLine"})) {
        const auto row = std::find_if(std::begin(mayKnow), std::end(mayKnow),
                                      [&](const Knows& k) { return liesUnder(file, k.room); });
        ASSERT_NE(row, std::end(mayKnow)) << file;
        for (const std::string& included : matchesOf(contentsOf(root / file), include)) {
            const bool allowed =
                std::any_of(row->rooms.begin(), row->rooms.end(),
                            [&](const std::string& room) { return liesUnder(included, room); });
            EXPECT_TRUE(allowed) << file << " includes " << included;
            EXPECT_TRUE(fs::exists(root / included)) << file << " includes " << included;
        }
    }
}

/// Headers of a library, and the only rooms that may name them. Others are the standard's.
struct Library {
    std::string header;
    std::vector<std::string> rooms;
};

const Library libraries[] = {
    {"vips/", {"Desktop/ImageIO/"}},
    {"libheif/", {"Desktop/ImageIO/"}},
    {"exiv2/", {"Desktop/ImageIO/"}},
    {"zlib.h", {"Desktop/ImageIO/"}},
    {"jpeglib.h", {"Desktop/ImageIO/"}},
    {"webp/", {"Desktop/ImageIO/"}},
    {"hwy/", {"Neural/", "Desktop/VideoToolbox/"}},
    {"CLI/", {"CommandLine/", "Neural/Compile/"}},
    {"nlohmann/",
     {"Neural/", "Desktop/Analytics/", "Desktop/Application/", "Desktop/Localization/",
      "Desktop/RemoteConfig/", "CommandLine/"}},
    {"plist/", {"Desktop/RemoteConfig/"}},
    {"Q", {"Desktop/Qml/"}},
    {"libav", {"Desktop/AVFoundation/"}},
    {"systemd/", {"Desktop/Application/"}},
    {"libsw", {"Desktop/AVFoundation/"}},
    {"sqlite3", {"Desktop/UserDefaults/", "Desktop/Photos/"}},
    {"curl/", {"Desktop/URLSession/"}},
};

TEST(Architecture, NoLibraryIsNamedOutsideItsRoom) {
    const std::regex include("#include <([^>]+)>");
    for (const fs::path& file :
         sources({"Base", "Platform", "Quillmere", "Neural", "Desktop", "CommandLine"})) {
        for (const std::string& included : matchesOf(contentsOf(root / file), include)) {
            for (const Library& library : libraries) {
                if (!included.starts_with(library.header)) continue;
                EXPECT_TRUE(
                    std::any_of(library.rooms.begin(), library.rooms.end(),
                                [&](const std::string& room) { return liesUnder(file, room); }))
                    << file << " includes <" << included << ">";
            }
        }
    }
}

TEST(Architecture, NothingIsLeftForLater) {
    // Written apart, so that this file doesn't find itself.
    const std::regex marks(
        "\\b(TO"
        "DO|FIX"
        "ME|X"
        "XX)\\b");
    for (const fs::path& file :
         sources({"Base", "Platform", "Quillmere", "Neural", "Desktop", "CommandLine", "Tests"})) {
        EXPECT_TRUE(matchesOf(contentsOf(root / file), marks).empty()) << file;
    }
}

}  // namespace
}  // namespace quillmere
