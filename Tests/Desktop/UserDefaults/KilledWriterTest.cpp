// Two processes store settings without end while one of them is killed again and again.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <random>
#include <string>

#include "Desktop/UserDefaults/DesktopUserDefaults.h"
#include "Tests/Fakes/FakeConsole.h"
#include "Tests/KilledProcess.h"
#include "Tests/TemporaryFolder.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;

constexpr std::int64_t slots = 7;

std::string slotOf(const std::string& name, std::int64_t value) {
    return name + std::to_string(value % slots);
}

/// Stores rising numbers under keys by turns, reads the latest back, and tells each number once it
/// counts as stored.
KilledProcess writer(const fs::path& folder, const std::string& name, std::int64_t first) {
    return KilledProcess([&](const KilledProcess::Tell& tell) {
        CallLog log;
        FakeConsole console(log);
        DesktopUserDefaults settings(folder, console);
        for (std::int64_t value = first;; ++value) {
            settings.setInteger(value, slotOf(name, value));
            for (const std::string& line : log.lines()) std::fprintf(stderr, "%s\n", line.c_str());
            for (std::int64_t old = std::max(first, value - slots + 1); old <= value; ++old) {
                if (settings.integerForKey(slotOf(name, old)) != old) return;
            }
            if (!settings.isStored() || !log.lines().empty()) return;
            tell(value);
        }
    });
}

class KilledWriter : public testing::Test {
protected:
    void note(const std::string& name, std::int64_t value) { stored[slotOf(name, value)] = value; }

    /// Opens the store anew, and looks for all that was told to be in it.
    void expectEverythingStored() {
        DesktopUserDefaults settings(folder.path(), console);
        for (const auto& [slot, value] : stored) {
            EXPECT_GE(settings.integerForKey(slot), value) << slot;
        }
        EXPECT_TRUE(log.lines().empty()) << log.lines().front();
        for (const std::string& name : folder.names()) {
            EXPECT_EQ(name.find("damaged"), std::string::npos);
        }
    }

    TemporaryFolder folder;
    CallLog log;
    FakeConsole console{log};
    std::map<std::string, std::int64_t> stored;
};

TEST_F(KilledWriter, LosesNothingThatWasStoredAndHoldsNobodyUp) {
    constexpr int kills = 20;
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> numbers(0, 4);

    KilledProcess steady = writer(folder.path(), "steady", 0);
    std::int64_t first = 0;
    for (int round = 0; round < kills; ++round) {
        KilledProcess killed = writer(folder.path(), "killed", first);
        // None: it is killed while it opens the store. The numbers come one by one, so that the
        // signal meets the writer anywhere on its way to a later one.
        for (int left = numbers(random); left > 0; --left) {
            const auto value = killed.next();
            ASSERT_TRUE(value) << "the writer gave up";
            note("killed", *value);
        }
        ASSERT_TRUE(killed.kill());
        while (const auto value = killed.next()) note("killed", *value);

        do {
            const auto value = steady.next();
            ASSERT_TRUE(value) << "the other writer gave up";
            note("steady", *value);
        } while (steady.hasNext());
        expectEverythingStored();
        first += 1000;
    }
    ASSERT_TRUE(steady.kill());
    while (const auto value = steady.next()) note("steady", *value);
    expectEverythingStored();
    EXPECT_GE(stored.size(), static_cast<std::size_t>(slots));
}

}  // namespace
}  // namespace quillmere
