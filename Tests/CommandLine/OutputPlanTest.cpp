#include "CommandLine/OutputPlan.h"

#include <gmock/gmock.h>

#include "Tests/TemporaryFolder.h"

namespace quillmere::cli {
namespace {

using testing::HasSubstr;
namespace fs = std::filesystem;

class OutputPlans : public testing::Test {
protected:
    EnhanceOptions optionsFor(std::vector<fs::path> inputs) const {
        EnhanceOptions options;
        options.inputs = std::move(inputs);
        return options;
    }

    static std::string refusal(OutputPlan& plan, const fs::path& input) {
        const auto output = plan.outputFor(input);
        return output ? "accepted" : output.error().localizedDescription;
    }

    TemporaryFolder folder;
    fs::path input = folder.write("my.cat.png", "x");
};

TEST_F(OutputPlans, NamesTheResultByInputStyleAndFormat) {
    const fs::path album = folder / "album";
    fs::create_directory(album);
    struct Case {
        std::optional<fs::path> output;
        std::optional<PictureFormat> format;
        fs::path expected;
        PictureFormat expectedFormat;
        PictureFormat otherwise = PictureFormat::jpg;
    };
    const Case cases[] = {
        {{}, {}, folder / "my.cat_high.jpg", PictureFormat::jpg},
        {{}, PictureFormat::png, folder / "my.cat_high.png", PictureFormat::png},
        {album, PictureFormat::heic, album / "my.cat_high.heic", PictureFormat::heic},
        {folder / "out.PNG", {}, folder / "out.PNG", PictureFormat::png},
        {folder / "out.jpeg", {}, folder / "out.jpeg", PictureFormat::jpg},
        {folder / "out", {}, folder / "out", PictureFormat::jpg},
        {folder / "out.bak", PictureFormat::heic, folder / "out.bak", PictureFormat::heic},
        // The stored choice decides only where nothing else does.
        {{}, {}, folder / "my.cat_high.heic", PictureFormat::heic, PictureFormat::heic},
        {album, {}, album / "my.cat_high.png", PictureFormat::png, PictureFormat::png},
        {folder / "out", {}, folder / "out", PictureFormat::png, PictureFormat::png},
        {folder / "out.png", {}, folder / "out.png", PictureFormat::png, PictureFormat::heic},
        {{},
         PictureFormat::jpg,
         folder / "my.cat_high.jpg",
         PictureFormat::jpg,
         PictureFormat::heic},
    };
    for (const Case& c : cases) {
        EnhanceOptions options = optionsFor({input});
        options.output = c.output;
        options.format = c.format;
        const auto output = OutputPlan(options, c.otherwise).outputFor(input);
        ASSERT_TRUE(output) << output.error().localizedDescription;
        EXPECT_EQ(output->path, c.expected);
        EXPECT_EQ(output->format, c.expectedFormat);
    }
}

TEST_F(OutputPlans, AnExistingFileNeedsForce) {
    EnhanceOptions options = optionsFor({input});
    options.output = folder.write("there.jpg", "old");
    OutputPlan careful(options, PictureFormat::jpg);
    EXPECT_THAT(refusal(careful, input), HasSubstr("already exists"));
    options.force = true;
    OutputPlan forced(options, PictureFormat::jpg);
    EXPECT_EQ(refusal(forced, input), "accepted");
    fs::create_symlink("nowhere", folder / "dangling.jpg");
    options.force = false;
    options.output = folder / "dangling.jpg";
    OutputPlan dangling(options, PictureFormat::jpg);
    EXPECT_THAT(refusal(dangling, input), HasSubstr("already exists"));
}

TEST_F(OutputPlans, NoInputOfTheRunIsEverReplaced) {
    const fs::path other = folder.write("other.jpg", "y");
    fs::create_hard_link(other, folder / "link.jpg");
    for (const fs::path& target : {other, folder / "link.jpg", folder / "./other.jpg"}) {
        EnhanceOptions options = optionsFor({input, other});
        options.output = target;
        options.force = true;
        OutputPlan plan(options, PictureFormat::jpg);
        EXPECT_THAT(refusal(plan, input), HasSubstr("would replace the input")) << target;
    }
}

TEST_F(OutputPlans, TwoInputsOfOneNameDoNotShareAResult) {
    fs::create_directory(folder / "b");
    const fs::path twin = folder.write("b/my.cat.png", "z");
    EnhanceOptions options = optionsFor({input, twin});
    fs::create_directory(folder / "out");
    options.output = folder / "out";
    options.force = true;
    OutputPlan plan(options, PictureFormat::jpg);
    EXPECT_EQ(refusal(plan, input), "accepted");
    EXPECT_THAT(refusal(plan, twin), HasSubstr("earlier result"));
}

TEST_F(OutputPlans, AFolderThatIsMissingOrInTheWayIsToldBeforeTheWork) {
    EnhanceOptions options = optionsFor({input});
    options.output = folder / "missing/out.jpg";
    OutputPlan missing(options, PictureFormat::jpg);
    EXPECT_THAT(refusal(missing, input), HasSubstr("There is no folder"));

    fs::create_directory(folder / "my.cat_high.jpg");
    EnhanceOptions inTheWay = optionsFor({input});
    inTheWay.force = true;
    OutputPlan plan(inTheWay, PictureFormat::jpg);
    EXPECT_THAT(refusal(plan, input), HasSubstr("is a folder"));
}

}  // namespace
}  // namespace quillmere::cli
