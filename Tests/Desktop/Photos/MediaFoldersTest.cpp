#include "Desktop/Photos/MediaFolders.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "Tests/TemporaryFolder.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;

TEST(MediaFolders, ALineThatNamesNoFolderOfItsOwnLeavesTheUsualOne) {
    const TemporaryFolder config;
    setenv("XDG_CONFIG_HOME", config.path().c_str(), 1);
    struct Row {
        std::string lines;
        fs::path pictures;
    };
    const fs::path usual = "/home/me/Pictures";
    const Row rows[] = {
        {"", usual},
        {"XDG_PICTURES_DIR=\"$HOME/Bilder\"\n", "/home/me/Bilder"},
        {"  XDG_PICTURES_DIR=\"/mnt//My \\\"best\\\" $1/\"", "/mnt/My \"best\" $1"},
        {"XDG_PICTURES_DIR=\"$HOME/a\"\nXDG_PICTURES_DIR=\"$HOME/b\"\n", "/home/me/b"},
        {"XDG_PICTURES_DIR=\"/b\xFF\"\r\n", "/b\xFF"},
        {"#XDG_PICTURES_DIR=\"/a\"\nXDG_PICTURES_DIRS=\"/a\"\n=\n", usual},
        {"XDG_PICTURES_DIR=\"/a\"\nXDG_PICTURES_DIR=\"$HOME/\"\n", usual},
        {"XDG_PICTURES_DIR=\"$HOME\"\n", usual},
        {"XDG_PICTURES_DIR=\"$HOMEWORK/a\"\n", usual},
        {"XDG_PICTURES_DIR=\"relative\"\n", usual},
        {"XDG_PICTURES_DIR=\"/\"\n", usual},
        {"XDG_PICTURES_DIR=\"/not ended\n", usual},
        {"XDG_PICTURES_DIR=\"/not ended\\", usual},
        {"XDG_PICTURES_DIR=/unquoted\n", usual},
    };
    for (const char* home : {"/home/me", "/home/me/"}) {
        setenv("HOME", home, 1);
        for (const auto& [lines, pictures] : rows) {
            config.write("user-dirs.dirs", lines);
            EXPECT_EQ(userMediaFolders(), (MediaFolders{pictures, "/home/me/Videos"})) << lines;
        }
    }
    config.write("user-dirs.dirs", "XDG_VIDEOS_DIR=\"/films\"\n");
    EXPECT_EQ(userMediaFolders(), (MediaFolders{usual, "/films"}));
}

TEST(MediaFolders, AreFoundWithoutAFileAndNotWithoutAHome) {
    const TemporaryFolder home;
    setenv("HOME", home.path().c_str(), 1);
    unsetenv("XDG_CONFIG_HOME");
    EXPECT_EQ(userMediaFolders(), (MediaFolders{home / "Pictures", home / "Videos"}));
    fs::create_directory(home / ".config");
    home.write(".config/user-dirs.dirs", "XDG_VIDEOS_DIR=\"$HOME/Films\"\n");
    EXPECT_EQ(userMediaFolders(), (MediaFolders{home / "Pictures", home / "Films"}));
    unsetenv("HOME");
    EXPECT_EQ(userMediaFolders(), std::nullopt);
}

}  // namespace
}  // namespace quillmere
