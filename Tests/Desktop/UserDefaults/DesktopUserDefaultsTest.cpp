// What may become of the file of settings, and what a user keeps in each case.
#include "Desktop/UserDefaults/DesktopUserDefaults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <algorithm>
#include <functional>

#include "Tests/Fakes/FakeConsole.h"
#include "Tests/TemporaryFolder.h"

namespace quillmere {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
namespace fs = std::filesystem;
using Names = std::set<std::string>;

class SettingsFiles : public testing::Test {
protected:
    std::unique_ptr<DesktopUserDefaults> open() {
        return std::make_unique<DesktopUserDefaults>(data, console);
    }

    /// Runs statements on the file, as a program of somebody else's.
    void meddle(const std::string& sql) const {
        sqlite3* connection = nullptr;
        ASSERT_EQ(sqlite3_open(file.c_str(), &connection), SQLITE_OK);
        char* message = nullptr;
        EXPECT_EQ(sqlite3_exec(connection, sql.c_str(), nullptr, nullptr, &message), SQLITE_OK)
            << message;
        sqlite3_close(connection);
    }

    static std::string contentsOf(const fs::path& path) {
        std::ifstream stream(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    void replaceFile(const std::string& contents) const {
        std::ofstream(file, std::ios::binary) << contents;
    }
    Names names() const {
        Names found;
        for (const auto& entry : fs::directory_iterator(data)) {
            found.insert(entry.path().filename());
        }
        return found;
    }

    TemporaryFolder folder;
    CallLog log;
    FakeConsole console{log};
    fs::path data = folder / "share/quillmere";
    fs::path file = data / "Settings.sqlite";
};

TEST_F(SettingsFiles, ValuesOutliveTheObjectAndReachOthersAtOnce) {
    const auto application = open();
    const auto commandLine = open();
    application->setInteger(7, "key");
    EXPECT_EQ(commandLine->integerForKey("key"), 7);
    commandLine->setInteger(8, "key");
    EXPECT_EQ(application->integerForKey("key"), 8);
    EXPECT_TRUE(application->isStored() && commandLine->isStored());
    EXPECT_EQ(open()->integerForKey("key"), 8);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(SettingsFiles, ReadingMakesNoFileAndWritingKeepsThemPrivate) {
    EXPECT_EQ(open()->integerForKey("key"), 0);
    EXPECT_EQ(folder.names(), Names());
    open()->setInteger(1, "key");
    struct stat status {};
    ASSERT_EQ(stat(data.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0700u);
    EXPECT_EQ(names(), Names{"Settings.sqlite"});
}

TEST_F(SettingsFiles, ADamagedFileIsMovedAsideUnchangedAndTheStoreBeginsAnew) {
    {
        const auto settings = open();
        settings->setInteger(7, "key");
        for (char c = 'a'; c <= 'z'; ++c) settings->setInteger(c, std::string(800, c));
    }
    const std::string good = contentsOf(file);
    ASSERT_GT(good.size(), 3 * 4096u);
    std::string garbled = good;
    std::fill(garbled.begin() + 4096, garbled.begin() + 3 * 4096, '\xA5');
    const std::pair<const char*, std::string> cases[] = {
        {"no database", std::string(5000, 'x')},
        {"garbled pages", garbled},
        {"cut short", good.substr(0, good.size() / 2)},
    };
    int number = 0;
    for (const auto& [what, contents] : cases) {
        SCOPED_TRACE(what);
        replaceFile(contents);
        const auto settings = open();
        EXPECT_EQ(settings->integerForKey("key"), 0);
        settings->setInteger(9, "key");
        EXPECT_TRUE(settings->isStored());
        EXPECT_EQ(open()->integerForKey("key"), 9);

        const std::string suffix = ++number == 1 ? "" : "-" + std::to_string(number);
        const fs::path aside = file.string() + ".damaged" + suffix;
        EXPECT_TRUE(contentsOf(aside) == contents);
        ASSERT_EQ(log.lines().size(), static_cast<std::size_t>(number));
        EXPECT_THAT(log.lines().back(), AllOf(HasSubstr("damaged"), HasSubstr(aside.string())));
    }
}

TEST_F(SettingsFiles, ADatabaseOfSomebodyElseIsNotWrittenInto) {
    fs::create_directories(data);
    meddle("CREATE TABLE settings (name, colour); INSERT INTO settings VALUES ('a', 'red')");
    const std::string before = contentsOf(file);
    open()->setInteger(1, "key");
    EXPECT_EQ(open()->integerForKey("key"), 1);
    EXPECT_EQ(log.lines().size(), 1u);
    fs::rename(file.string() + ".damaged", file);
    meddle("UPDATE settings SET colour = 'blue' WHERE name = 'a' AND colour = 'red'");
    EXPECT_NE(contentsOf(file), before) << "the row is gone";
}

TEST_F(SettingsFiles, DamageThatShowsWhileTheFileIsOpenIsMended) {
    const auto settings = open();
    settings->setInteger(1, "key");
    meddle(
        "PRAGMA writable_schema = ON; UPDATE sqlite_schema SET rootpage = 99;"
        "PRAGMA schema_version = 99");
    settings->setInteger(2, "key");
    EXPECT_TRUE(settings->isStored());
    EXPECT_EQ(open()->integerForKey("key"), 2);
    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("damaged")));
}

// As a second process does that met damage first.
TEST_F(SettingsFiles, AFileThatWasMovedOrRemovedWhileOpenIsLeft) {
    const auto first = open();
    first->setInteger(1, "key");
    for (const char* suffix : {"", "-wal", "-shm"}) {
        fs::rename(file.string() + suffix, folder / ("moved" + std::string(suffix)));
    }
    EXPECT_EQ(first->integerForKey("key"), 0);
    const auto second = open();
    second->setInteger(2, "key");
    EXPECT_EQ(first->integerForKey("key"), 2);
    first->setInteger(3, "key");
    EXPECT_EQ(second->integerForKey("key"), 3);

    fs::remove_all(data);
    first->setInteger(4, "key");
    EXPECT_TRUE(first->isStored());
    EXPECT_EQ(second->integerForKey("key"), 4);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(SettingsFiles, WithoutAPlaceToWriteValuesLiveInMemoryUntilThereIsOne) {
    folder.write("share", "in the way");
    const auto settings = open();
    EXPECT_EQ(settings->integerForKey("key"), 0);
    EXPECT_THAT(log.lines(), IsEmpty()) << "nothing is lost so far";
    settings->setInteger(1, "key");
    settings->setInteger(2, "key");
    settings->setInteger(3, "other");
    EXPECT_EQ(settings->integerForKey("key"), 2);
    EXPECT_FALSE(settings->isStored());
    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("can't be used: Not a directory")));

    fs::remove(folder / "share");
    settings->setInteger(4, "key");
    EXPECT_FALSE(settings->isStored()) << "the other key";
    settings->setInteger(5, "other");
    EXPECT_TRUE(settings->isStored());
    EXPECT_EQ(open()->integerForKey("key"), 4);
    EXPECT_EQ(log.lines().size(), 1u);
}

TEST_F(SettingsFiles, WithoutAHomeValuesLiveInMemory) {
    DesktopUserDefaults settings(std::nullopt, console);
    EXPECT_FALSE(settings.boolForKey("key"));
    settings.setBool(true, "key");
    EXPECT_TRUE(settings.boolForKey("key"));
    EXPECT_FALSE(settings.isStored());
    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("set HOME")));
}

}  // namespace
}  // namespace quillmere
