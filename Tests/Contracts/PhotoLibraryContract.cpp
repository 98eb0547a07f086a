// What every photo library owes the application.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "Desktop/Dispatch/DesktopDispatch.h"
#include "Desktop/FileManager/DesktopFileManager.h"
#include "Desktop/ImageIO/DesktopImageIO.h"
#include "Desktop/Photos/DesktopPhotoLibrary.h"
#include "Platform/ImageIO/UTType.h"
#include "Tests/Fakes/FakeConsole.h"
#include "Tests/Fakes/FakePhotoLibrary.h"
#include "Tests/TemporaryFolder.h"

namespace quillmere {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A library, and how a test adds to it and counts in it behind its back.
struct LibraryUnderTest {
    virtual ~LibraryUnderTest() = default;
    virtual PHPhotoLibrary& library() = 0;
    virtual std::size_t count() = 0;
    /// The identifier of a new picture.
    virtual std::string add(const std::string& name) = 0;
};

struct Fake final : LibraryUnderTest {
    Fake(DesktopDispatch& dispatch, const TemporaryFolder&) : fake(dispatch) {}
    PHPhotoLibrary& library() override { return fake; }
    std::size_t count() override { return fake.savedAssets().size(); }
    std::string add(const std::string& name) override {
        PHAsset asset;
        asset.localIdentifier = name;
        fake.add(asset);
        return name;
    }
    FakePhotoLibrary fake;
};

struct Desktop final : LibraryUnderTest {
    Desktop(DesktopDispatch& dispatch, const TemporaryFolder& folder)
        : folders{folder / "Pictures", folder / "Videos"},
          desktop({dispatch, fileManager, imageIO, console}, folders, folder / "data") {
        std::filesystem::create_directories(folders.pictures);
    }
    PHPhotoLibrary& library() override { return desktop; }
    std::size_t count() override {
        EXPECT_TRUE(desktop.scan());
        return *desktop.count(std::nullopt);
    }
    std::string add(const std::string& name) override;

    CallLog log;
    FakeConsole console{log};
    WorkerPool pool{1};
    DesktopFileManager fileManager;
    DesktopImageIO imageIO{pool};
    MediaFolders folders;
    DesktopPhotoLibrary desktop;
};

UIImage picture() {
    const std::shared_ptr<std::uint8_t> pixels(new std::uint8_t[16 * 16 * 4](),
                                               std::default_delete<std::uint8_t[]>());
    return UIImage(CGImage({16, 16}, 16 * 4, pixels));
}

std::vector<std::byte> png() {
    WorkerPool pool(1);
    return *DesktopImageIO(pool).pngRepresentation(picture());
}

std::string Desktop::add(const std::string& name) {
    EXPECT_TRUE(
        fileManager.writeFile(folders.pictures / (name + ".png"), png(), WriteExisting::refuse));
    EXPECT_TRUE(desktop.scan());
    const auto assets = desktop.assets(std::nullopt, 0, 100);
    for (const LibraryAsset& asset : *assets) {
        if (asset.path.stem() == name) return asset.asset.localIdentifier;
    }
    ADD_FAILURE() << name << " is not there";
    return {};
}

template <class Library>
class PhotoLibraryContract : public testing::Test {
protected:
    struct End {
        bool success;
        std::optional<Error> error;
    };

    End change(PHPhotoLibrary::ChangeBlock block) {
        std::optional<End> end;
        library.library().performChanges(
            std::move(block), [&](bool success, const std::optional<Error>& error) {
                dispatch.mainQueue().async([&, success, error] { end = {success, error}; });
            });
        dispatch.mainQueue().runUntil([&] { return end.has_value(); });
        return *end;
    }

    static void addPicture(PHChanges& changes) {
        const auto bytes = png();
        changes.creationRequestForAsset().addResourceWithType(PHAssetResourceType::photo, bytes,
                                                              UTTypePNG);
    }

    TemporaryFolder folder;
    DesktopDispatch dispatch;
    Library library{dispatch, folder};
};

using Libraries = testing::Types<Fake, Desktop>;
TYPED_TEST_SUITE(PhotoLibraryContract, Libraries);

TYPED_TEST(PhotoLibraryContract, AChangeIsMadeWholeOrNotAtAll) {
    EXPECT_TRUE(this->change([](PHChanges&) {}).success);
    EXPECT_TRUE(this->change([this](PHChanges& changes) {
                        this->addPicture(changes);
                        changes.creationRequestForAssetFromImage(picture());
                    })
                    .success);
    EXPECT_EQ(this->library.count(), 2u);

    const std::vector<PHPhotoLibrary::ChangeBlock> invalid = {
        [](PHChanges& changes) { changes.creationRequestForAsset(); },
        [&](PHChanges& changes) {
            changes.creationRequestForAssetFromVideoAtFileURL(this->folder / "missing.mov");
        }};
    for (const auto& block : invalid) {
        const auto end = this->change([&](PHChanges& changes) {
            this->addPicture(changes);
            block(changes);
        });
        EXPECT_FALSE(end.success);
        ASSERT_TRUE(end.error);
        EXPECT_EQ(end.error->domain, PHPhotosErrorDomain);
        EXPECT_EQ(end.error->code, PHPhotosErrorInvalidResource);
        EXPECT_EQ(this->library.count(), 2u);
    }
}

TYPED_TEST(PhotoLibraryContract, BlocksRunOneByOneAndHandlersNeitherThereNorOnTheMainThread) {
    constexpr int count = 10;
    std::vector<int> order;  // of the blocks, which must not overlap
    std::atomic<int> misplaced = 0;
    int ended = 0;
    for (int i = 0; i < count; ++i) {
        const auto blockThread = std::make_shared<std::thread::id>();
        this->library.library().performChanges(
            [&, i, blockThread](PHChanges&) {
                *blockThread = std::this_thread::get_id();
                order.push_back(i);
            },
            [&, blockThread, main = std::this_thread::get_id()](bool, const auto&) {
                const auto here = std::this_thread::get_id();
                if (here == main || *blockThread == main || here == *blockThread) ++misplaced;
                this->dispatch.mainQueue().async([&] { ++ended; });
            });
    }
    this->dispatch.mainQueue().runUntil([&] { return ended == count; });
    EXPECT_THAT(order, ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8, 9));
    EXPECT_EQ(misplaced, 0);
}

TYPED_TEST(PhotoLibraryContract, AHandlerMayAskForTheNextChange) {
    bool second = false;
    this->library.library().performChanges(
        [](PHChanges&) {},
        [&](bool, const auto&) {
            this->library.library().performChanges(
                [](PHChanges&) {},
                [&](bool, const auto&) {
                    this->dispatch.mainQueue().async([&] { second = true; });
                });
        });
    this->dispatch.mainQueue().runUntil([&] { return second; });
}

TYPED_TEST(PhotoLibraryContract, TheOlderWayAnswersOnTheMainThread) {
    std::optional<bool> failed;
    this->library.library().UISaveVideoAtPathToSavedPhotosAlbum(
        this->folder / "missing.mov", [&, main = std::this_thread::get_id()](const auto& error) {
            EXPECT_EQ(std::this_thread::get_id(), main);
            failed = error.has_value();
        });
    this->dispatch.mainQueue().runUntil([&] { return failed.has_value(); });
    EXPECT_TRUE(*failed);
}

TYPED_TEST(PhotoLibraryContract, FetchesInTheOrderAskedForAndLeavesOutWhatItHasNot) {
    const std::string a = this->library.add("a"), b = this->library.add("b");
    std::vector<std::string> found;
    for (const PHAsset& asset :
         this->library.library().fetchAssetsWithLocalIdentifiers({b, "unknown", a})) {
        found.push_back(asset.localIdentifier);
    }
    EXPECT_THAT(found, ElementsAre(b, a));
    EXPECT_THAT(this->library.library().fetchAssetsWithLocalIdentifiers({}), IsEmpty());
}

}  // namespace
}  // namespace quillmere
