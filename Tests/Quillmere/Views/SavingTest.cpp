#include <cmath>

#include "Quillmere/Views/Detail/ImageFormatSelectionView.h"
#include "Tests/Awaited.h"
#include "Tests/Quillmere/Views/DetailViewModelFixture.h"

namespace quillmere {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

const Location sydney{-33.86, 151.2, -12, Date(std::chrono::seconds(1'700'000'000))};
const Date taken(std::chrono::seconds(1'600'000'000));

Error libraryError(int code) { return {PHPhotosErrorDomain, code, "The library says no."}; }

class SavingTest : public DetailViewModelTest {
protected:
    SavingTest() {
        PHAsset asset;
        asset.localIdentifier = "A";
        asset.creationDate = taken;
        asset.location = sydney;
        library.add(asset);
    }

    PHPickerResult picked(std::optional<std::string> identifier,
                          std::shared_ptr<FakeItemProvider> provider) const {
        return {std::move(identifier), std::move(provider)};
    }
    std::shared_ptr<FakeItemProvider> item(std::optional<Result<UIImage>> image) {
        auto provider = std::make_shared<FakeItemProvider>(*dispatch);
        provider->image = std::move(image);
        return provider;
    }
    std::shared_ptr<FakeItemProvider> good(PixelSize size = {10, 10}) {
        return item(FakeImageIO::picture(size));
    }
    std::shared_ptr<FakeItemProvider> unreadable() {
        return item(Result<UIImage>(Error{"provider", 1, "lost"}));
    }
    std::shared_ptr<FakeItemProvider> webP(Result<std::vector<std::byte>> data) {
        auto provider = std::make_shared<FakeItemProvider>(*dispatch);
        provider->data.emplace("org.webmproject.webp", std::move(data));
        return provider;
    }

    void open(std::optional<std::string> identifier) {
        model->prepare(FakeImageIO::picture({10, 10}), std::nullopt,
                       std::vector{picked(std::move(identifier), good())});
    }

    void save() {
        const auto shown = model->isShowShare.get();
        const auto alert = model->alert.get().has_value();
        model->saveImage();
        pumpUntil([&] {
            return model->isShowShare.get() != shown || model->alert.get().has_value() != alert;
        });
    }

    void startBatch(const std::vector<std::shared_ptr<FakeItemProvider>>& providers,
                    const std::optional<std::string>& identifier = {}) {
        std::vector<PHPickerResult> results;
        for (const auto& provider : providers) results.push_back(picked(identifier, provider));
        startBatch(results);
    }
    void startBatch(const std::vector<PHPickerResult>& results) {
        model->prepare(FakeImageIO::picture({10, 10}), std::nullopt, results);
        model->selectedStyle.set(EnhanceStyle::high);
        model->videoProgress.set(0);
        model->saveImages();
    }
    void runBatch(const std::vector<std::shared_ptr<FakeItemProvider>>& providers,
                  const std::optional<std::string>& identifier = {}) {
        startBatch(providers, identifier);
        expectABatch(true);
        pumpUntil([this] { return model->videoProgress.get() == -1.0F; });
        expectABatch(false);
    }
    void expectABatch(bool isRunning) {
        EXPECT_EQ(model->isVideoProcessing.get(), isRunning);
        EXPECT_EQ(model->isConverting.get(), isRunning);
        EXPECT_EQ(application.idleTimerDisabled, isRunning);
    }
};

TEST_F(SavingTest, AnEmptySlotSavesAndRecordsNothing) {
    open("A");
    model->selectedStyle.set(EnhanceStyle::high);
    model->saveImage();
    EXPECT_THAT(lines("event"), ElementsAre("event ShowDetail"));
}

TEST_F(SavingTest, TheSwitchesAtTheTimeOfSavingSayWhatIsKept) {
    struct Case {
        std::optional<std::string> identifier;
        bool keepsDate;
        bool keepsLocation;
        std::optional<Date> date;
        std::optional<Location> location;
    };
    for (const Case& c : {
             Case{"A", true, true, taken, sydney},
             Case{"A", true, false, taken, std::nullopt},
             Case{"A", false, true, std::nullopt, sydney},
             Case{"A", false, false, std::nullopt, std::nullopt},
             Case{"gone", true, true, std::nullopt, std::nullopt},
             Case{std::nullopt, true, true, std::nullopt, std::nullopt},
         }) {
        open(c.identifier);
        userDefaults.integers["preserveCreationDateKey"] = c.keepsDate;
        userDefaults.integers["preserveLocationKey"] = c.keepsLocation;
        model->isShowShare.set(false);
        const std::size_t start = log.lines().size();
        save();
        const SavedAsset asset = library.savedAssets().back();
        EXPECT_EQ(asset.creationDate, c.date);
        EXPECT_EQ(asset.location, c.location);
        const bool embeds = c.date || c.location;
        EXPECT_EQ(lines("imageWithProperties", start).size(), embeds ? 1u : 0u);
    }
}

TEST_F(SavingTest, EachFormatHasItsEncoderAndItsTypeAndOneThatFailsIsLeftToTheLibrary) {
    struct Case {
        std::int64_t stored;
        const char* refused;
        const char* encoding;
        const char* type;
        const char* bytes;
    };
    for (const Case& c : {
             Case{0, "", "jpeg 0.9", "public.jpeg", "jpeg 10x10"},
             Case{1, "", "heic 0.9", "public.heic", "heic 10x10"},
             Case{2, "", "png", "public.png", "png 10x10"},
             Case{7, "", "jpeg 0.9", "public.jpeg", "jpeg 10x10"},
             Case{1, "heic", "heic 0.9", "", ""},
         }) {
        open("A");
        userDefaults.integers["imageFormatKey"] = c.stored;
        userDefaults.integers["preserveCreationDateKey"] = 1;
        imageIO.refused = {c.refused};
        model->isShowShare.set(false);
        const std::size_t start = log.lines().size();
        save();
        EXPECT_FALSE(lines(c.encoding, start).empty());
        const SavedAsset asset = library.savedAssets().back();
        EXPECT_EQ(asset.typeIdentifier, c.type);
        EXPECT_EQ(asset.data, FakeImageIO::bytesOf(c.bytes));
        EXPECT_EQ(asset.image.has_value(), *c.refused != 0);
        EXPECT_EQ(asset.creationDate.has_value(), *c.refused == 0);
    }
}

TEST_F(SavingTest, EachFailureHasItsMessageAndCountsNothing) {
    struct Case {
        std::optional<Error> error;
        const char* message;
    };
    for (const Case& c : {
             Case{libraryError(3311), "error.accessUserDenied"},
             Case{libraryError(3305), "error.notEnoughSpace"},
             Case{libraryError(3302), "The library says no."},
         }) {
        open("A");
        model->alert.set(std::nullopt);
        library.failNext(c.error);
        save();
        EXPECT_EQ(alertMessage(), c.message);
        EXPECT_EQ(model->alert.get()->id(), "ok");
    }
    library.failWithoutError();
    model->alert.set(std::nullopt);
    save();
    EXPECT_EQ(alertMessage(), "Failed to save a image");
    EXPECT_FALSE(model->isShowShare.get());
    EXPECT_EQ(userDefaults.integers["reviewCountKey"], 0);
}

TEST_F(SavingTest, SavesAreCountedAndTheReviewIsAskedForOnTheTurnsThatTheAdLeaves) {
    open("A");
    std::vector<int> asked;
    for (int save = 1; save <= 21; ++save) {
        const int before = review.requests;
        model->isShowShare.set(false);
        this->save();
        if (review.requests > before) asked.push_back(save);
    }
    EXPECT_EQ(userDefaults.integers["reviewCountKey"], 21);
    EXPECT_THAT(asked, ElementsAre(1, 11, 21));
    EXPECT_EQ(lines("event TrySave Style=0").size(), 21u);
    EXPECT_EQ(lines("event Save Style=0").size(), 21u);
}

TEST_F(SavingTest, AnAdLibraryThatNeverAnswersHoldsUpNeitherAConversionNorASave) {
    open("A");
    convert(EnhanceStyle::high);
    clock->advanceBy(std::chrono::seconds(1));
    pump();
    for (int i = 0; i < 2; ++i) {
        model->isShowShare.set(false);
        save();
    }
    EXPECT_THAT(
        lines("event "),
        ElementsAre("event ShowDetail", "event TryConvert Style=1", "event ConvertSuccess Style=1",
                    "event ConvertAdsNotLoaded", "event TrySave Style=1", "event Save Style=1",
                    "event TrySave Style=1", "event Save Style=1", "event SaveAdsNotLoaded"));
    EXPECT_EQ(library.savedAssets().size(), 2u);
    EXPECT_EQ(ads.loads.size(), 1u) << "nothing is asked for again";
    EXPECT_FALSE(model->isConverting.get());
}

TEST_F(SavingTest, ABatchConvertsEveryPictureAfreshAndSaysThatItIsDone) {
    std::vector<float> progress;
    const auto watching =
        model->videoProgress.subscribe([&](float value) { progress.push_back(value); });
    userDefaults.integers["preserveLocationKey"] = 1;
    auto turned = item(FakeImageIO::picture({10, 20}, UIImageOrientation::right));
    runBatch({good(), webP(FakeImageIO::bytesOf("webp 8x6")), turned}, "A");

    ASSERT_EQ(library.savedAssets().size(), 3u);
    EXPECT_EQ(library.savedAssets()[1].data, FakeImageIO::bytesOf("jpeg 16x12"));
    EXPECT_EQ(library.savedAssets()[2].data, FakeImageIO::bytesOf("jpeg 40x20"));
    EXPECT_EQ(library.savedAssets()[2].location, sydney);
    EXPECT_EQ(library.savedAssets()[2].creationDate, std::nullopt);
    EXPECT_THAT(progress, ElementsAre(0.0F, 1 / 3.0F, 2 / 3.0F, 1.0F, -1.0F));
    ASSERT_TRUE(model->alert.get());
    EXPECT_EQ(model->alert.get()->title(), "CompletedToSave");
    EXPECT_EQ(alertMessage(), "");
    // Nothing of what belongs to a single picture.
    EXPECT_THAT(lines("event"), ElementsAre("event ShowDetail"));
    EXPECT_EQ(userDefaults.integers["reviewCountKey"], 0);
    EXPECT_FALSE(model->isShowShare.get() || model->hasConvertedImage());
}

TEST_F(SavingTest, EachPictureOfABatchHasItsOwnDateAndTheStyleAndFormatOfItsTurn) {
    PHAsset other;
    other.localIdentifier = "B";
    other.location = Location{1, 2, 3, taken};
    library.add(other);
    userDefaults.integers["preserveCreationDateKey"] = 1;
    userDefaults.integers["preserveLocationKey"] = 1;
    // What the user changes while each is converted.
    struct Change {
        EnhanceStyle style;
        std::int64_t format;
    };
    const Change changes[] = {
        {EnhanceStyle::godHigh, 2}, {EnhanceStyle::oniHigh, 1}, {EnhanceStyle::high, 0}};
    std::vector<EnhanceStyle> styles;
    const auto usual = enhance;
    enhance = [&](EnhanceStyle style, const UIImage& image, const TileEngine::Progress& progress,
                  const TileEngine::Completion& completion) {
        EXPECT_FALSE(progress);
        const Change& change = changes[styles.size()];
        styles.push_back(style);
        model->selectedStyle.set(change.style);
        userDefaults.setInteger(change.format, "imageFormatKey");
        for (const char* key : {"preserveCreationDateKey", "preserveLocationKey"}) {
            userDefaults.setBool(false, key);
        }
        usual(style, image, progress, completion);
    };
    startBatch({picked("A", good()), picked("B", good()), picked(std::nullopt, good())});
    pumpUntil([this] { return model->videoProgress.get() == -1.0F; });

    EXPECT_THAT(styles,
                ElementsAre(EnhanceStyle::high, EnhanceStyle::godHigh, EnhanceStyle::oniHigh));
    const auto saved = library.savedAssets();
    ASSERT_EQ(saved.size(), 3u);
    const char* types[] = {"public.png", "public.heic", "public.jpeg"};
    const std::optional<Date> dates[] = {taken, {}, {}};
    const std::optional<Location> places[] = {sydney, other.location, {}};
    for (std::size_t i = 0; i < saved.size(); ++i) {
        EXPECT_EQ(saved[i].typeIdentifier, types[i]) << i;
        EXPECT_EQ(saved[i].creationDate, dates[i]) << i;
        EXPECT_EQ(saved[i].location, places[i]) << i;
    }
    EXPECT_EQ(lines("boolForKey").size(), 2u) << "the switches hold for the whole batch";
}

TEST_F(SavingTest, APictureOfWhichNothingComesHoldsABatchUntilItIsStopped) {
    struct Case {
        const char* name;
        std::shared_ptr<FakeItemProvider> second;
    };
    enhance = [usual = enhance](EnhanceStyle style, const UIImage& image,
                                const TileEngine::Progress& progress,
                                const TileEngine::Completion& completion) {
        if (image.size().width == 2) return completion(std::nullopt, std::nullopt);
        usual(style, image, progress, completion);
    };
    for (const Case& c :
         {Case{"a failed load", webP(Error{"provider", 1, "lost"})},
          Case{"undecodable data", webP(FakeImageIO::bytesOf("rubbish"))},
          Case{"neither data nor a picture", std::make_shared<FakeItemProvider>(*dispatch)},
          Case{"the engine's silent end", good({2, 2})}}) {
        SCOPED_TRACE(c.name);
        c.second->name = "second.webp";
        const std::size_t before = library.savedAssets().size();
        startBatch({good(), c.second, good()});
        const auto picture = [this] { return model->batchPicture.get(); };
        pumpUntil(
            [&] { return (picture() && picture()->isHeld) || !model->isVideoProcessing.get(); });
        ASSERT_TRUE(picture());
        EXPECT_EQ(picture()->name, "second.webp");
        EXPECT_EQ(picture()->number, 2u);
        EXPECT_EQ(picture()->count, 3u);
        expectABatch(true);
        EXPECT_EQ(model->videoProgress.get(), 1 / 3.0F);
        EXPECT_EQ(library.savedAssets().size(), before + 1);

        model->stopWork();
        pumpUntil([this] { return !model->isVideoProcessing.get(); });
        expectABatch(false);
        EXPECT_FALSE(model->alert.get() || picture());
        EXPECT_EQ(library.savedAssets().size(), before + 1);
    }
    runBatch({good(), good()});
}

TEST_F(SavingTest, AStoppedBatchFinishesThePictureInWork) {
    struct Case {
        std::size_t stopsIn;  // of two pictures
        std::optional<std::string> message;
    };
    for (const Case& c : {Case{1, std::nullopt}, Case{2, ""}}) {
        std::size_t begun = 0;
        Awaited<bool> isInWork;
        Awaited<bool> mayGoOn;
        const auto usual = enhance;
        enhance = [&](EnhanceStyle style, const UIImage& image,
                      const TileEngine::Progress& progress,
                      const TileEngine::Completion& completion) {
            if (++begun == c.stopsIn) {
                isInWork.set(true);
                mayGoOn.get();
            }
            usual(style, image, progress, completion);
        };
        model->alert.set(std::nullopt);
        const std::size_t before = library.savedAssets().size();
        startBatch({good(), good()});
        isInWork.get();
        model->stopWork();
        pump();
        expectABatch(true);
        mayGoOn.set(true);
        pumpUntil([this] { return !model->isVideoProcessing.get(); });
        expectABatch(false);
        EXPECT_EQ(library.savedAssets().size() - before, c.stopsIn);
        EXPECT_EQ(alertMessage(), c.message) << "that all is saved";
        enhance = usual;
    }
}

TEST_F(SavingTest, ABatchWhoseScreenHasGoneNeitherKeepsTheMachineAwakeNorDisturbsTheNext) {
    Awaited<bool> isInWork;
    Awaited<bool> mayGoOn;
    Awaited<bool> mayEnd;
    const auto usual = enhance;
    enhance = [&](EnhanceStyle style, const UIImage& image, const TileEngine::Progress& progress,
                  const TileEngine::Completion& completion) {
        if (image.size().width == 1) {
            isInWork.set(true);
            mayGoOn.get();
        } else {
            mayEnd.get();
        }
        usual(style, image, progress, completion);
    };
    startBatch({good({1, 1}), good()});
    isInWork.get();
    model->abandonWork();
    EXPECT_FALSE(application.idleTimerDisabled);
    const std::weak_ptr<DetailViewModel> gone = model;
    model = std::make_shared<DetailViewModel>(ports());
    startBatch({good(), good()});
    mayGoOn.set(true);
    while (!gone.expired()) pump();
    pump();
    EXPECT_EQ(library.savedAssets().size(), 1u) << "the picture in work, and none after it";
    expectABatch(true);
    mayEnd.set(true);
    pumpUntil([this] { return !model->isVideoProcessing.get(); });
    EXPECT_EQ(library.savedAssets().size(), 3u);

    // Of one that is held, no thread is left waiting: the test ends.
    startBatch({webP(FakeImageIO::bytesOf("rubbish")), good()});
    pumpUntil([this] { return model->batchPicture.get() && model->batchPicture.get()->isHeld; });
    model->abandonWork();
    model.reset();
}

TEST_F(SavingTest, EachFailedTileOfAPictureInABatchCounts) {
    enhance = [usual = enhance](EnhanceStyle style, const UIImage& image,
                                const TileEngine::Progress& progress,
                                const TileEngine::Completion& completion) {
        if (image.size().width != 2) return usual(style, image, progress, completion);
        completion(std::nullopt, "first");
        completion(std::nullopt, "second");
    };
    const auto watching = model->videoProgress.subscribe([&](float value) {
        if (value > 0) log.record("progress " + std::to_string(std::lround(value * 3)));
    });
    const auto alerts = model->alert.subscribe([&](const std::optional<AlertTypes>& alert) {
        if (alert) log.record("alert " + alert->message().value_or(std::string()));
    });
    // The end may come before the last picture, as each failure leaves the group; and a failure
    // tells its progress at once, while that of a save has to go by the main queue.
    startBatch({good(), good({2, 2}), good()});
    pumpUntil([&] { return lines("progress").size() == 4 && !model->isVideoProcessing.get(); });
    EXPECT_THAT(lines("progress"),
                UnorderedElementsAre("progress 1", "progress 2", "progress 3", "progress 4"));
    EXPECT_THAT(lines("alert"), ElementsAre("alert first", "alert second"))
        << "and not that all is saved";
    EXPECT_EQ(library.savedAssets().size(), 2u);
}

TEST_F(SavingTest, EachFailureInABatchLeavesTheOthersAlone) {
    struct Case {
        const char* name;
        std::shared_ptr<FakeItemProvider> second;
        std::optional<std::string> engineFailure;
        std::optional<Error> libraryFailure;
        std::size_t saved;
        float lastProgress;
        std::optional<std::string> message;
    };
    for (const Case& c : {
             Case{"unreadable", unreadable(), {}, {}, 2, 2 / 3.0F, {}},
             Case{"engine", good({2, 2}), "no memory", {}, 2, 1.0F, "no memory"},
             Case{"library", good(), {}, libraryError(3305), 2, 1.0F, "error.notEnoughSpace"},
         }) {
        SCOPED_TRACE(c.name);
        const auto usual = enhance;
        enhance = [&](EnhanceStyle style, const UIImage& image,
                      const TileEngine::Progress& progress,
                      const TileEngine::Completion& completion) {
            if (image.size().width != 2) return usual(style, image, progress, completion);
            completion(std::nullopt, c.engineFailure);
        };
        if (c.libraryFailure) {
            library.failNext(std::nullopt);
            library.failNext(c.libraryFailure);
        }
        model->alert.set(std::nullopt);
        float last = 0;
        const auto watching = model->videoProgress.subscribe([&](float value) {
            if (value >= 0) last = value;
        });
        const std::size_t before = library.savedAssets().size();
        runBatch({good(), c.second, good()});
        EXPECT_EQ(library.savedAssets().size() - before, c.saved);
        EXPECT_EQ(last, c.lastProgress);
        EXPECT_EQ(alertMessage(), c.message);
        enhance = usual;
    }
}

TEST_F(SavingTest, ABatchNeverHasTwoPicturesInTheEngine) {
    std::atomic<int> running = 0;
    std::atomic<int> most = 0;
    const auto usual = enhance;
    enhance = [&](EnhanceStyle style, const UIImage& image, const TileEngine::Progress& progress,
                  const TileEngine::Completion& completion) {
        most = std::max(most.load(), ++running);
        std::this_thread::yield();
        --running;
        usual(style, image, progress, completion);
    };
    runBatch(std::vector<std::shared_ptr<FakeItemProvider>>(50, good()));
    EXPECT_EQ(most, 1);
    EXPECT_EQ(library.savedAssets().size(), 50u);
}

TEST_F(SavingTest, TheFormatSheetStoresEachChoiceAtOnce) {
    userDefaults.integers["imageFormatKey"] = 2;
    userDefaults.integers["preserveLocationKey"] = 1;
    Published<bool> isPresented{true};
    ImageFormatSelectionView sheet(userDefaults, isPresented);
    EXPECT_EQ(sheet.selectedFormat.get(), UserDefaultsHelper::ImageFormat::png);
    EXPECT_TRUE(sheet.preserveLocation.get());
    const std::size_t start = log.lines().size();
    sheet.selectedFormat.set(UserDefaultsHelper::ImageFormat::heic);
    sheet.preserveCreationDate.set(true);
    sheet.preserveLocation.set(false);
    EXPECT_THAT(lines("set", start),
                ElementsAre("setInteger 1 imageFormatKey", "setBool true preserveCreationDateKey",
                            "setBool false preserveLocationKey"));
    sheet.doneTapped();
    EXPECT_FALSE(isPresented.get());
}

}  // namespace
}  // namespace quillmere
