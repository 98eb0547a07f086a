// What every implementation of `FileManager` owes its callers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <memory>

#include "Desktop/FileManager/DesktopFileManager.h"
#include "Tests/Fakes/FakeFileManager.h"
#include "Tests/TemporaryFolder.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;

std::vector<std::byte> bytesOf(const std::string& text) {
    std::vector<std::byte> bytes;
    for (const char c : text) bytes.push_back(static_cast<std::byte>(c));
    return bytes;
}

class FileManagerContract : public testing::TestWithParam<bool> {
protected:
    FileManagerContract() {
        fs::create_directory(folder / "sub");
        if (!GetParam()) {
            auto fake = std::make_unique<FakeFileManager>();
            fake->folders = {folder.path(), folder / "sub"};
            files = std::move(fake);
        } else {
            files = std::make_unique<DesktopFileManager>();
        }
    }

    int writeCode(const std::string& name, WriteExisting existing) const {
        const auto written = files->writeFile(folder / name, bytesOf("new"), existing);
        return written ? 0 : written.error().code;
    }

    TemporaryFolder folder;
    std::unique_ptr<FileManager> files;
};

INSTANTIATE_TEST_SUITE_P(Both, FileManagerContract, testing::Values(false, true),
                         [](const auto& desktop) { return desktop.param ? "Desktop" : "Fake"; });

TEST_P(FileManagerContract, GivesBackWhatWasWritten) {
    for (const std::string& text :
         {std::string(), std::string("\0\n\xFF", 3), std::string(300000, 'x')}) {
        ASSERT_TRUE(files->writeFile(folder / "a", bytesOf(text), WriteExisting::replace));
        EXPECT_EQ(*files->contentsOfFile(folder / "a"), bytesOf(text));
    }
}

TEST_P(FileManagerContract, HasATemporaryFolderThatTakesFiles) {
    const fs::path path = files->temporaryDirectory() / "a";
    ASSERT_TRUE(files->writeFile(path, bytesOf("new"), WriteExisting::refuse));
    EXPECT_EQ(*files->contentsOfFile(files->temporaryDirectory() / "a"), bytesOf("new"));
}

TEST_P(FileManagerContract, RefusingKeepsTheExistingFile) {
    ASSERT_TRUE(files->writeFile(folder / "a", bytesOf("old"), WriteExisting::refuse));
    EXPECT_EQ(writeCode("a", WriteExisting::refuse), EEXIST);
    EXPECT_EQ(*files->contentsOfFile(folder / "a"), bytesOf("old"));
    EXPECT_EQ(writeCode("a", WriteExisting::replace), 0);
    EXPECT_EQ(*files->contentsOfFile(folder / "a"), bytesOf("new"));
}

TEST_P(FileManagerContract, ErrorsCarryTheSystemsNumberAndNameTheFile) {
    EXPECT_EQ(writeCode("missing/a", WriteExisting::replace), ENOENT);
    EXPECT_EQ(writeCode("sub", WriteExisting::replace), EISDIR);
    const auto folderRead = files->contentsOfFile(folder / "sub");
    ASSERT_FALSE(folderRead);
    EXPECT_EQ(folderRead.error().code, EISDIR);
    const auto missing = files->contentsOfFile(folder / "nothing");
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.error().code, ENOENT);
    EXPECT_EQ(missing.error().domain, FileManager::posixErrorDomain);
    EXPECT_THAT(missing.error().localizedDescription, testing::HasSubstr("nothing"));
}

TEST_P(FileManagerContract, FoldersAreMadeListedAndRemovedWithAllThatTheyHold) {
    const fs::path deep = folder / "sub/deep/deeper";
    ASSERT_TRUE(files->createDirectory(deep));
    ASSERT_TRUE(files->createDirectory(deep)) << "an existing folder is a success";
    ASSERT_TRUE(files->writeFile(folder / "sub/a", bytesOf("new"), WriteExisting::refuse));
    EXPECT_THAT(*files->contentsOfDirectory(folder / "sub"),
                testing::UnorderedElementsAre("a", "deep"));

    ASSERT_TRUE(files->removeItem(folder / "sub/deep"));
    ASSERT_TRUE(files->removeItem(folder / "sub/a"));
    EXPECT_THAT(*files->contentsOfDirectory(folder / "sub"), testing::IsEmpty());
    EXPECT_EQ(files->removeItem(folder / "sub/a").error().code, ENOENT);
    EXPECT_EQ(files->contentsOfDirectory(folder / "none").error().code, ENOENT);
}

// What only a real file system knows.
class DesktopFiles : public testing::Test {
protected:
    mode_t modeOf(const std::string& name) const {
        struct stat status {};
        stat((folder / name).c_str(), &status);
        return status.st_mode & 07777;
    }

    bool write(const std::string& name) {
        const auto written = files.writeFile(folder / name, bytesOf("new"), WriteExisting::replace);
        return static_cast<bool>(written);
    }

    TemporaryFolder folder;
    DesktopFileManager files;
};

TEST_F(DesktopFiles, ANewFileObeysTheMaskAndAReplacedOneKeepsItsMode) {
    const mode_t mask = umask(027);
    folder.write("secret", "old");
    chmod((folder / "secret").c_str(), 0600);
    EXPECT_TRUE(write("fresh"));
    EXPECT_TRUE(write("secret"));
    umask(mask);
    EXPECT_EQ(modeOf("fresh"), 0640u);
    EXPECT_EQ(modeOf("secret"), 0600u);
    EXPECT_EQ(folder.names(), (std::set<std::string>{"fresh", "secret"}));
}

TEST_F(DesktopFiles, ALinkIsWrittenThrough) {
    folder.write("real", "old");
    fs::create_symlink("real", folder / "link");
    fs::create_symlink("fresh", folder / "dangling");
    fs::create_symlink("circle", folder / "circle");
    EXPECT_TRUE(write("link"));
    EXPECT_TRUE(write("dangling"));
    EXPECT_FALSE(write("circle"));
    EXPECT_TRUE(fs::is_symlink(folder / "link"));
    EXPECT_EQ(*files.contentsOfFile(folder / "real"), bytesOf("new"));
    EXPECT_EQ(*files.contentsOfFile(folder / "fresh"), bytesOf("new"));
}

TEST_F(DesktopFiles, WhatIsNoRegularFileIsNotReplaced) {
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_FALSE(write("pipe"));
    EXPECT_TRUE(fs::is_fifo(folder / "pipe"));
    const auto device = files.writeFile("/dev/full", bytesOf("x"), WriteExisting::replace);
    EXPECT_FALSE(device);
}

TEST_F(DesktopFiles, NamesOfFullLengthCanBeWrittenAndLongerOnesAreErrors) {
    EXPECT_TRUE(write(std::string(255, 'n')));
    EXPECT_FALSE(write(std::string(256, 'n')));
}

TEST_F(DesktopFiles, AnAbandonedPartIsRemovedAndAStrangersIsNot) {
    folder.write(".a.abc123.part", "left by a killed process");
    folder.write(".b.abc123.part", "of another file");
    folder.write(".a.part", "a user's own");
    EXPECT_TRUE(write("a"));
    EXPECT_EQ(folder.names(), (std::set<std::string>{".a.part", ".b.abc123.part", "a"}));
}

}  // namespace
}  // namespace quillmere
