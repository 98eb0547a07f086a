#include <map>

#include "Quillmere/Views/Detail/ImageConversionProgressView.h"
#include "Tests/Awaited.h"
#include "Tests/Quillmere/Views/DetailViewModelFixture.h"

namespace quillmere {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ConversionTest : public DetailViewModelTest {
protected:
    ConversionTest() { model->prepare(FakeImageIO::picture({30, 20}), std::nullopt, std::nullopt); }
};

TEST_F(ConversionTest, TakingTheInputFillsTheFirstSlotAndLoadsTheAdBeforeItsEvent) {
    EXPECT_THAT(log.lines(), ElementsAre("load interstitial save", "event ShowDetail"));
    EXPECT_EQ(sizeOf(model->convertedImages.get()[0]), (Size{30, 20}));
    model->convert();
    EXPECT_FALSE(model->isConverting.get());
    EXPECT_THAT(lines("event Try"), IsEmpty()) << "the original is there from the start";
}

TEST_F(ConversionTest, AStyleIsMadeOnceAndKeptBesideTheOthers) {
    convert(EnhanceStyle::high);
    convert(EnhanceStyle::superHigh);
    convert(EnhanceStyle::high);
    EXPECT_THAT(
        lines("event"),
        ElementsAre("event ShowDetail", "event TryConvert Style=1", "event ConvertSuccess Style=1",
                    "event TryConvert Style=2", "event ConvertSuccess Style=2"));
    EXPECT_EQ(sizeOf(model->convertedImages.get()[1]), (Size{60, 40}));
    EXPECT_TRUE(model->hasConvertedImage());

    model->rapidHQExpectedSize.set(Size{1, 1});
    model->resetConvertedImages();
    EXPECT_EQ(model->selectedStyle.get(), EnhanceStyle::high);
    EXPECT_EQ(model->rapidHQExpectedSize.get(), std::nullopt);
    const auto images = model->convertedImages.get();
    for (std::size_t i = 0; i < images.size(); ++i) EXPECT_EQ(images[i].has_value(), i == 0) << i;
}

TEST_F(ConversionTest, EachEndOfARunLeavesWhatItShould) {
    struct Case {
        const char* name;
        std::vector<std::optional<std::string>> failures;
        bool picture;
        std::optional<std::string> message;
        bool converted;
    };
    for (const Case& c : {
             Case{"silent", {}, false, std::nullopt, false},
             Case{"one failure", {"no memory"}, false, "no memory", false},
             Case{"several tiles", {"first", "second"}, false, "second", false},
             Case{"a picture with holes", {"first"}, true, "first", true},
         }) {
        SCOPED_TRACE(c.name);
        model->resetConvertedImages();
        model->alert.set(std::nullopt);
        Awaited<bool> hasReturned;
        enhance = [&](EnhanceStyle, const UIImage& image, const TileEngine::Progress&,
                      const TileEngine::Completion& completion) {
            for (const auto& failure : c.failures) completion(std::nullopt, failure);
            if (c.picture) completion(image, std::nullopt);
            if (c.failures.empty()) completion(std::nullopt, std::nullopt);
            hasReturned.set(true);
        };
        convert(EnhanceStyle::high);
        pumpUntil([&] {
            return model->hasConvertedImage() == c.converted && alertMessage() == c.message;
        });
        EXPECT_EQ(alertMessage(), c.message);
        if (c.message) {
            EXPECT_EQ(model->alert.get()->title(), "Error");
        }
        EXPECT_EQ(model->imageConversionProgress.get(), 0.0F);
        hasReturned.get();
    }
}

TEST_F(ConversionTest, APictureGoesToTheStyleThatIsSelectedAtTheEnd) {
    Awaited<bool> freed;
    enhance = [&](EnhanceStyle, const UIImage& image, const TileEngine::Progress&,
                  const TileEngine::Completion& completion) {
        completion(std::nullopt, "a tile failed");
        freed.get();
        completion(image, std::nullopt);
    };
    convert(EnhanceStyle::high);
    model->selectedStyle.set(EnhanceStyle::godHigh);
    freed.set(true);
    pumpUntil([&] { return model->hasConvertedImage(); });
    EXPECT_FALSE(model->convertedImages.get()[1]);
    EXPECT_THAT(lines("event ConvertSuccess"), ElementsAre("event ConvertSuccess Style=3"));
}

TEST_F(ConversionTest, ProgressIsSeenAndTheModelOutlivesItsScreen) {
    Awaited<bool> seen;
    enhance = [&](EnhanceStyle, const UIImage& image, const TileEngine::Progress& progress,
                  const TileEngine::Completion& completion) {
        dispatch->mainQueue().async([progress] { progress(0.125F); });
        seen.get();
        completion(image, std::nullopt);
    };
    model->selectedStyle.set(EnhanceStyle::high);
    model->imageConversionProgress.set(0.75F);  // of a run before it
    model->convert();
    EXPECT_EQ(model->imageConversionProgress.get(), 0.0F);
    pumpUntil([&] { return model->imageConversionProgress.get() == 0.125F; });
    EXPECT_EQ(ImageConversionProgressView::percentage(0.125F), "13%");
    const std::weak_ptr<DetailViewModel> weak = model;
    model.reset();
    EXPECT_FALSE(weak.expired());
    seen.set(true);
    pumpUntil([&] { return !lines("event ConvertSuccess").empty(); });
    pump();
}

TEST_F(ConversionTest, ARunThatStartsWhileAnotherGoesOnHasAnEndOfItsOwn) {
    std::map<EnhanceStyle, Awaited<bool>> mayEnd;
    for (const EnhanceStyle style : {EnhanceStyle::high, EnhanceStyle::godHigh}) mayEnd[style];
    enhance = [&](EnhanceStyle style, const UIImage& image, const TileEngine::Progress&,
                  const TileEngine::Completion& completion) {
        mayEnd.at(style).get();
        completion(image, std::nullopt);
    };
    for (const EnhanceStyle style : {EnhanceStyle::high, EnhanceStyle::godHigh}) {
        model->selectedStyle.set(style);
        model->convert();
    }
    for (const EnhanceStyle style : {EnhanceStyle::godHigh, EnhanceStyle::high}) {
        model->isConverting.set(true);
        mayEnd.at(style).set(true);
        pumpUntil([this] { return !model->isConverting.get(); });
    }
    EXPECT_THAT(
        lines("event "),
        ElementsAre("event ShowDetail", "event TryConvert Style=1", "event TryConvert Style=3",
                    "event ConvertSuccess Style=3", "event ConvertSuccess Style=3"));
}

TEST_F(ConversionTest, TheAdComesASecondLaterAndNotForTheOriginal) {
    convert(EnhanceStyle::high);
    clock->advanceBy(std::chrono::milliseconds(999));
    pump();
    EXPECT_THAT(lines("event ConvertAds"), IsEmpty());
    clock->advanceBy(std::chrono::milliseconds(1));
    pump();
    EXPECT_THAT(lines("event ConvertAds"), ElementsAre("event ConvertAdsNotLoaded"));

    DetailViewModel::Images none;
    model->convertedImages.set(none);
    convert(EnhanceStyle::original);
    clock->advanceBy(std::chrono::seconds(2));
    pump();
    EXPECT_EQ(lines("event ConvertAds").size(), 1u);
}

TEST_F(ConversionTest, RapidHQStatesItsSizeAndStartsNoRun) {
    struct Case {
        const char* name;
        const char* url;
        SystemVersion version;
        std::optional<int> factor;
        std::optional<Size> known;
        std::optional<Size> expected;
        std::optional<Size> kept;
    };
    FakeTrack track;
    track.naturalSize = {-640, 360};
    avFoundation.movies["/clip.mov"].tracks = {track};
    track.naturalSize = {640, 0};
    avFoundation.movies["/flat.mov"].tracks = {track};
    const Size size{640, 360};
    for (const Case& c : {
             Case{"enlarged", "/clip.mov", {26, 0}, 4, {}, Size{2560, 1440}, size},
             Case{"known", "/clip.mov", {26, 0}, 2, Size{3, 2}, Size{6, 4}, Size{3, 2}},
             Case{"a side of nothing", "/flat.mov", {26, 0}, 2, {}, Size{1280, 0}, {}},
             Case{"no factor", "/clip.mov", {26, 0}, {}, {}, {}, size},
             Case{"older system", "/clip.mov", {18, 5}, 4, {}, {}, {}},
             Case{"no track", "/none.mov", {26, 0}, 4, {}, {}, {}},
             Case{"a picture", nullptr, {26, 0}, 4, {}, {}, {}},
         }) {
        SCOPED_TRACE(c.name);
        model->originalVideoUrl =
            c.url ? std::optional<std::filesystem::path>(c.url) : std::nullopt;
        model->originalVideoSize = c.known;
        DetailViewModel::Images images;
        images[9] = FakeImageIO::picture({1, 1});
        model->convertedImages.set(images);
        device.version = c.version;
        factor = c.factor;
        model->rapidHQExpectedSize.set(Size{1, 1});
        model->selectedStyle.set(EnhanceStyle::rapidHQ);
        model->convert();
        EXPECT_FALSE(model->isConverting.get());
        EXPECT_EQ(model->rapidHQExpectedSize.get(), c.expected);
        EXPECT_EQ(model->originalVideoSize, c.kept);
        EXPECT_FALSE(model->hasConvertedImage()) << "it has no picture";
    }
    model->resetConvertedImages();
    model->rapidHQExpectedSize.set(Size{1, 1});
    convert(EnhanceStyle::original);
    EXPECT_EQ(model->rapidHQExpectedSize.get(), std::nullopt);
    EXPECT_THAT(lines("event Try"), IsEmpty());
}

}  // namespace
}  // namespace quillmere
