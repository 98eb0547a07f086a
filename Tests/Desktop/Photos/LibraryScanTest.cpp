// How the photo library follows the user's folders, whatever lies there.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <atomic>
#include <map>

#include "Desktop/Dispatch/DesktopDispatch.h"
#include "Desktop/FileManager/DesktopFileManager.h"
#include "Desktop/ImageIO/DesktopImageIO.h"
#include "Desktop/Photos/DesktopPhotoLibrary.h"
#include "Tests/Awaited.h"
#include "Tests/Fakes/FakeConsole.h"
#include "Tests/TemporaryFolder.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;

const Date taken(std::chrono::seconds(1'600'000'000));
const Location sydney{-33.86, 151.2, -12, taken};

class LibraryScan : public testing::Test {
protected:
    LibraryScan() {
        fs::create_directories(pictures);
        start();
    }

    /// A new process, as far as the library can tell.
    void start() {
        library.reset();
        reads = 0;
        library = std::make_unique<DesktopPhotoLibrary>(
            DesktopPhotoLibrary::Ports{dispatch, fileManager, imageIO, console},
            MediaFolders{pictures, folder / "Videos"}, folder / "data",
            [this](const fs::path& path) -> std::optional<FileRecord> {
                ++reads;
                std::ifstream file(path);
                std::string text;
                if (path.filename() == "awaited.jpg") followed.set(true);
                if (!(file >> text) || text == "damaged") return std::nullopt;
                FileRecord record;
                record.typeIdentifier = "public.jpeg";
                record.pixelSize = {static_cast<int>(text.size()), 1};
                return record;
            });
    }

    fs::path write(const std::string& name, const std::string& contents = "x") const {
        fs::create_directories((pictures / name).parent_path());
        std::ofstream(pictures / name, std::ios::binary) << contents;
        return pictures / name;
    }

    /// Names and identifiers, after a scan.
    std::map<std::string, std::string> scanned() {
        EXPECT_TRUE(library->scan());
        std::map<std::string, std::string> names;
        const auto assets = library->assets(std::nullopt, 0, 1000);
        for (const LibraryAsset& asset : *assets) {
            names[asset.path.lexically_relative(pictures).string()] = asset.asset.localIdentifier;
        }
        return names;
    }
    std::vector<std::string> names() {
        std::vector<std::string> list;
        for (const auto& [name, identifier] : scanned()) list.push_back(name);
        return list;
    }

    LibraryAsset only() {
        EXPECT_TRUE(library->scan());
        const auto assets = library->assets(std::nullopt, 0, 10);
        EXPECT_EQ(assets->size(), 1u);
        return assets->at(0);
    }

    /// A new picture made by the library, with its date and place.
    void save() {
        Awaited<bool> done;
        library->performChanges(
            [](PHChanges& changes) {
                auto& request = changes.creationRequestForAsset();
                request.addResourceWithType(PHAssetResourceType::photo,
                                            std::vector<std::byte>(4, std::byte{'a'}),
                                            "public.jpeg");
                request.setCreationDate(taken);
                request.setLocation(sydney);
            },
            [&](bool success, const auto&) { done.set(success); });
        EXPECT_TRUE(done.get());
    }

    TemporaryFolder folder;
    const fs::path pictures = folder / "Pictures";
    std::atomic<int> reads = 0;
    Awaited<bool> followed;
    CallLog log;
    FakeConsole console{log};
    WorkerPool pool{1};
    DesktopDispatch dispatch;
    DesktopFileManager fileManager;
    DesktopImageIO imageIO{pool};
    std::unique_ptr<DesktopPhotoLibrary> library;
};

TEST_F(LibraryScan, OddThingsInTheFoldersAreLeftOutAndDoNoHarm) {
    write("good.jpg");
    write("deep/er/good.png");
    write("bytes \xFF.jpg");
    write("damaged.jpg", "damaged");
    write("empty.jpg", "");
    write(".hidden.jpg");
    write(".folder/inside.jpg");
    write("text.txt");
    fs::create_directory_symlink(pictures, pictures / "loop");
    fs::create_symlink(pictures / "good.jpg", pictures / "link.jpg");
    fs::create_symlink(pictures / "nowhere", pictures / "broken.jpg");
    mkfifo((pictures / "pipe.jpg").c_str(), 0600);
    EXPECT_THAT(names(), UnorderedElementsAre("good.jpg", "deep/er/good.png", "bytes \xFF.jpg"));
}

TEST_F(LibraryScan, AnAssetKeepsItsIdentifierThroughMovesChangesAndRestarts) {
    write("a.jpg");
    write("old/b.jpg", "bb");
    const auto before = scanned();
    ASSERT_THAT(before, SizeIs(2));

    fs::rename(pictures / "a.jpg", pictures / "renamed.jpg");
    fs::rename(pictures / "old", pictures / "new");
    auto now = scanned();
    EXPECT_EQ(now["renamed.jpg"], before.at("a.jpg"));
    EXPECT_EQ(now["new/b.jpg"], before.at("old/b.jpg"));
    EXPECT_THAT(now, SizeIs(2));

    start();
    fs::rename(pictures / "renamed.jpg", pictures / "new" / "c.jpg");
    now = scanned();
    EXPECT_EQ(now["new/c.jpg"], before.at("a.jpg"));
    EXPECT_EQ(reads, 0) << "a move is no reason to read a file again";

    write("new/c.jpg", "changed");
    now = scanned();
    EXPECT_EQ(now["new/c.jpg"], before.at("a.jpg"));
    const auto changed = library->assetWithIdentifier(before.at("a.jpg"));
    EXPECT_EQ((*changed)->asset.pixelSize.width, 7) << "what it was before it changed";
}

TEST_F(LibraryScan, WhatIsMovedInWhileItRunsIsSeenWithoutAScan) {
    ASSERT_THAT(scanned(), IsEmpty());
    fs::create_directories(folder / "outside/inner");
    folder.write("outside/inner/awaited.jpg", "x");
    fs::rename(folder / "outside", pictures / "inside");
    EXPECT_TRUE(followed.get());
}

TEST_F(LibraryScan, WhatHasGoneIsForgottenAndACopyIsAnAssetOfItsOwn) {
    write("a.jpg");
    write("gone/b.jpg");
    const auto before = scanned();
    fs::copy(pictures / "a.jpg", pictures / "copy.jpg");
    fs::remove_all(pictures / "gone");
    const auto now = scanned();
    EXPECT_EQ(now.at("a.jpg"), before.at("a.jpg"));
    EXPECT_NE(now.at("copy.jpg"), before.at("a.jpg"));
    EXPECT_THAT(now, SizeIs(2));
    EXPECT_THAT(library->fetchAssetsWithLocalIdentifiers({before.at("gone/b.jpg")}), IsEmpty());
}

TEST_F(LibraryScan, ALostOrDamagedCatalogueIsMadeAnewFromTheFiles) {
    write("a.jpg");
    ASSERT_THAT(scanned(), SizeIs(1));
    library.reset();
    folder.write("data/Library.sqlite", std::string(5000, 'z'));
    fs::remove(folder / "data/Library.sqlite-wal");
    start();
    EXPECT_THAT(names(), ElementsAre("a.jpg"));
    bool keptAside = false;
    for (const auto& entry : fs::directory_iterator(folder / "data")) {
        const std::string name = entry.path().filename();
        keptAside |=
            name != "Library.sqlite" && fs::is_regular_file(entry) && fs::file_size(entry) == 5000;
    }
    EXPECT_TRUE(keptAside) << "the damaged file may be worth something to somebody";
}

TEST_F(LibraryScan, WhatAnAssetWasGivenWinsOverItsFileAndStays) {
    save();
    const LibraryAsset asset = only();
    EXPECT_EQ(asset.asset.creationDate, taken);
    EXPECT_EQ(asset.asset.location, sydney);
    struct stat status {};
    ASSERT_EQ(stat(asset.path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mtim.tv_sec, 1'600'000'000);

    std::ofstream(asset.path) << "touched";
    start();
    EXPECT_EQ(only().asset.localIdentifier, asset.asset.localIdentifier);
    EXPECT_EQ(only().asset.creationDate, taken);
    EXPECT_EQ(only().asset.location, sydney);
}

TEST_F(LibraryScan, NamesAreNeverTakenFromOtherFiles) {
    for (int i = 0; i < 5; ++i) save();
    EXPECT_THAT(names(), SizeIs(5));
}

TEST_F(LibraryScan, AFileNeedNotLieInTheLibrary) {
    const auto file = folder.write("plain.jpg", "four");
    const std::string identifier = DesktopPhotoLibrary::identifierForFile(file);
    const auto found = library->fetchAssetsWithLocalIdentifiers({identifier});
    ASSERT_THAT(found, SizeIs(1));
    EXPECT_EQ(found[0].pixelSize.width, 4);
    EXPECT_FALSE(library->pickerResultForFile(file)->assetIdentifier);
    EXPECT_FALSE(library->pickerResultForFile(folder / "missing.jpg"));
    EXPECT_FALSE(library->pickerResultForAsset("unknown"));
}

TEST_F(LibraryScan, AProviderGivesWhatItsTypeAllowsAndAnErrorOtherwise) {
    const auto provider =
        library->pickerResultForFile(folder.write("plain.jpg", "four"))->itemProvider;
    EXPECT_TRUE(provider->hasItemConformingToTypeIdentifier("public.image"));
    EXPECT_TRUE(provider->hasItemConformingToTypeIdentifier("public.jpeg"));
    EXPECT_FALSE(provider->hasItemConformingToTypeIdentifier("org.webmproject.webp"));
    EXPECT_FALSE(provider->hasItemConformingToTypeIdentifier("public.movie"));
    EXPECT_TRUE(provider->canLoadObjectOfClassUIImage());

    const auto data = [&](const char* type) {
        Awaited<Result<std::vector<std::byte>>> loaded;
        provider->loadDataRepresentationForTypeIdentifier(
            type, [&](const auto& result) { loaded.set(result); });
        return loaded.get();
    };
    EXPECT_EQ(data("public.jpeg")->size(), 4u);
    EXPECT_FALSE(data("org.webmproject.webp"));
    fs::remove(folder / "plain.jpg");
    EXPECT_FALSE(data("public.jpeg"));
    Awaited<bool> hasPicture;
    provider->loadObjectOfClassUIImage([&](const auto& image) { hasPicture.set(bool(image)); });
    EXPECT_FALSE(hasPicture.get());
}

}  // namespace
}  // namespace quillmere
