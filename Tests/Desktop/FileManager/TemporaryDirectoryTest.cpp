#include "Desktop/FileManager/TemporaryDirectory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>

#include "Tests/TemporaryFolder.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(TemporaryDirectory, IsForTheUserAloneAndGoesWithItsOwner) {
    const TemporaryFolder system;
    {
        TemporaryDirectory directory(system.path());
        EXPECT_THAT(system.names(), IsEmpty());
        const fs::path path = directory.path();
        EXPECT_EQ(directory.path(), path);
        EXPECT_THAT(system.names(), ElementsAre(path.filename()));
        struct stat status {};
        ASSERT_EQ(stat(path.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777u, 0700u);
        std::ofstream(path / "movie.mov") << "frames";
    }
    EXPECT_THAT(system.names(), IsEmpty());
}

TEST(TemporaryDirectory, TakesThoseOfKilledOwnersAwayAndLeavesAllElse) {
    const TemporaryFolder system;
    fs::create_directory(system / "quillmere-test-abcdef");
    system.write("quillmere-abcdef", "a file");
    fs::create_directory_symlink(system.path(), system / "quillmere-linked");
    TemporaryDirectory alive(system.path());
    const fs::path living = alive.path();

    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t child = fork();
    if (child == 0) {
        TemporaryDirectory directory(system.path());
        const fs::path path = directory.path();
        fs::create_directory(path / "sub");
        std::ofstream(path / "sub" / "movie.mov") << "frames";
        (void)!write(ready[1], "x", 1);
        pause();
    }
    char byte = 0;
    ASSERT_EQ(read(ready[0], &byte, 1), 1);
    EXPECT_EQ(system.names().size(), 5u);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);

    TemporaryDirectory next(system.path());
    const fs::path made = next.path();
    EXPECT_EQ(system.names(),
              (std::set<std::string>{living.filename(), made.filename(), "quillmere-abcdef",
                                     "quillmere-linked", "quillmere-test-abcdef"}));
}

TEST(TemporaryDirectory, ThatCantBeMadeIsNoFolderAndIsTriedAgain) {
    const TemporaryFolder system;
    TemporaryDirectory directory(system / "missing");
    EXPECT_FALSE(fs::exists(directory.path()));
    fs::create_directory(system / "missing");
    EXPECT_TRUE(fs::is_directory(directory.path()));
}

}  // namespace
}  // namespace quillmere
