#include "Desktop/FileManager/UserFolders.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace quillmere {
namespace {

void setOrUnset(const char* name, const char* value) {
    value ? setenv(name, value, 1) : unsetenv(name);
}

TEST(UserFolders, FollowTheBaseDirectoryRules) {
    struct Folder {
        const char* variable;
        const char* inHome;
        std::optional<std::filesystem::path> (*folder)();
    };
    const Folder folders[] = {
        {"XDG_CACHE_HOME", ".cache", userCacheFolder},
        {"XDG_DATA_HOME", ".local/share", userDataFolder},
        {"XDG_STATE_HOME", ".local/state", userStateFolder},
    };
    for (const auto& [variable, inHome, folder] : folders) {
        setOrUnset(variable, "/var/cache/me");
        setOrUnset("HOME", "/home/me");
        EXPECT_EQ(folder(), "/var/cache/me/quillmere");
        for (const char* noPath : {static_cast<const char*>(nullptr), "", "relative"}) {
            setOrUnset(variable, noPath);
            setOrUnset("HOME", "/home/me");
            EXPECT_EQ(folder(), std::filesystem::path("/home/me") / inHome / "quillmere");
            setOrUnset("HOME", noPath);
            EXPECT_EQ(folder(), std::nullopt);
        }
    }
}

}  // namespace
}  // namespace quillmere
