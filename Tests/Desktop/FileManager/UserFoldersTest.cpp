#include "Desktop/FileManager/UserFolders.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace quillmere {
namespace {

void setOrUnset(const char* name, const char* value) {
    value ? setenv(name, value, 1) : unsetenv(name);
}

TEST(UserFolders, TheCacheFollowsTheBaseDirectorySpecification) {
    struct Case {
        const char* cacheHome;
        const char* home;
        std::optional<std::filesystem::path> expected;
    };
    const Case cases[] = {
        {"/var/cache/me", "/home/me", "/var/cache/me/quillmere"},
        {nullptr, "/home/me", "/home/me/.cache/quillmere"},
        {"", "/home/me", "/home/me/.cache/quillmere"},
        {"relative", "/home/me", "/home/me/.cache/quillmere"},
        {nullptr, nullptr, std::nullopt},
        {nullptr, "", std::nullopt},
    };
    for (const Case& c : cases) {
        setOrUnset("XDG_CACHE_HOME", c.cacheHome);
        setOrUnset("HOME", c.home);
        EXPECT_EQ(userCacheFolder(), c.expected);
    }
}

}  // namespace
}  // namespace quillmere
