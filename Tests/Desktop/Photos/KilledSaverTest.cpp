// Two processes save pairs of pictures without end, and are killed again and again.
#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <string>

#include "Desktop/Dispatch/DesktopDispatch.h"
#include "Desktop/FileManager/DesktopFileManager.h"
#include "Desktop/ImageIO/DesktopImageIO.h"
#include "Desktop/Photos/DesktopPhotoLibrary.h"
#include "Tests/Awaited.h"
#include "Tests/Fakes/FakeConsole.h"
#include "Tests/KilledProcess.h"
#include "Tests/TemporaryFolder.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t pictureBytes = 20'000;

/// A picture is whole where all of its bytes are there.
std::optional<FileRecord> readWhole(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(file), {});
    if (bytes != std::string(pictureBytes, 'p')) return std::nullopt;
    FileRecord record;
    record.typeIdentifier = "public.jpeg";
    return record;
}

/// A library and all that it needs, as a process has it.
struct Start {
    explicit Start(const fs::path& folder)
        : library({dispatch, fileManager, imageIO, console},
                  {folder / "Pictures", folder / "Videos"}, folder / "data", readWhole) {}

    CallLog log;
    FakeConsole console{log};
    WorkerPool pool{1};
    DesktopDispatch dispatch;
    DesktopFileManager fileManager;
    DesktopImageIO imageIO{pool};
    DesktopPhotoLibrary library;
};

bool savePair(DesktopPhotoLibrary& library, std::int64_t number) {
    Awaited<bool> done;
    library.performChanges(
        [number](PHChanges& changes) {
            for (int i = 0; i < 2; ++i) {
                auto& request = changes.creationRequestForAsset();
                request.addResourceWithType(PHAssetResourceType::photo,
                                            std::vector(pictureBytes, std::byte{'p'}),
                                            "public.jpeg");
                request.setCreationDate(Date(std::chrono::seconds(number)));
            }
        },
        [&](bool success, const std::optional<Error>& error) {
            if (error) std::fprintf(stderr, "%s\n", error->localizedDescription.c_str());
            done.set(success);
        });
    return done.get();
}

/// Saves pairs dated with rising numbers, and tells each number once its pair counts as saved.
KilledProcess saver(const fs::path& folder, std::int64_t first) {
    return KilledProcess([&](const KilledProcess::Tell& tell) {
        Start start(folder);
        for (std::int64_t number = first; savePair(start.library, number); ++number) tell(number);
    });
}

/// What the next start finds: whole pairs, each file with one entry, and nothing else.
void expectWholePairs(const fs::path& folder, const std::set<std::int64_t>& saved) {
    Start start(folder);
    ASSERT_TRUE(start.library.scan());
    std::map<std::int64_t, int> found;
    std::set<fs::path> paths;
    const auto assets = start.library.assets(std::nullopt, 0, 100'000);
    ASSERT_TRUE(assets);
    for (const LibraryAsset& asset : *assets) {
        paths.insert(asset.path);
        ++found[std::chrono::duration_cast<std::chrono::seconds>(
                    asset.asset.creationDate->time_since_epoch())
                    .count()];
    }
    for (const auto& [number, count] : found) EXPECT_EQ(count, 2) << "half of pair " << number;
    for (const std::int64_t number : saved) EXPECT_TRUE(found.contains(number)) << number;

    std::set<fs::path> files;
    std::error_code notThereYet;
    for (const auto& file : fs::directory_iterator(folder / "Pictures/Quillmere", notThereYet)) {
        files.insert(file.path());
    }
    EXPECT_EQ(files, paths);
    EXPECT_TRUE(start.log.lines().empty()) << start.log.lines().front();
}

TEST(KilledSaver, LeavesWholeChangesOnlyAndNothingHidden) {
    constexpr int kills = 100;
    const TemporaryFolder folder;
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> numbers(0, 3);

    std::set<std::int64_t> saved;
    for (int killed = 0; killed < kills && !testing::Test::HasFailure(); killed += 2) {
        const std::int64_t first = 1'000'000 + 1000 * killed;
        KilledProcess savers[] = {saver(folder.path(), first), saver(folder.path(), first + 1000)};
        // None: they are killed while they start.
        for (int left = numbers(random); left > 0; --left) {
            const auto number = savers[0].next();
            ASSERT_TRUE(number) << "the process gave up";
            saved.insert(*number);
        }
        for (KilledProcess& each : savers) {
            ASSERT_TRUE(each.kill());
            while (const auto number = each.next()) saved.insert(*number);
        }
        expectWholePairs(folder.path(), saved);
    }
    EXPECT_FALSE(saved.empty());
}

}  // namespace
}  // namespace quillmere
