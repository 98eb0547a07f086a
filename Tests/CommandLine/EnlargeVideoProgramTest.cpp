// Videos through real networks.
#include "Tests/CommandLine/VideoProgram.h"

namespace quillmere {
namespace {

using EnlargeVideoProgram = VideoProgram;

TEST_F(EnlargeVideoProgram, EveryStyleGivesItsSizeAndAPictureLikeTheSource) {
    struct Case {
        std::string style, source, coded;
        int frames, width, height;
    };
    for (const Case& c : {
             Case{"speedAnime", "640x360", "2560,1440", 2, 2560, 1440},
             Case{"high", "640x360", "1280,720", 1, 1280, 720},
             Case{"rapidHQ", "640x360", "2560,1440", 2, 2560, 1440},
             Case{"speedGeneral", "64x36", "256,144", 2, 256, 144},
             Case{"superSpeed", "64x36", "256,144", 2, 256, 144},
             Case{"superHigh", "64x36", "256,144", 1, 256, 144},
             Case{"godHigh", "64x36", "256,144", 1, 256, 144},
             Case{"oniHigh", "64x36", "256,144", 1, 256, 144},
             Case{"kyokuHigh", "64x36", "256,144", 1, 256, 144},
         }) {
        SCOPED_TRACE(c.style);
        // At a high rate, so that little is lost in the encoding.
        make("-f lavfi -i testsrc2=s=" + c.source + ":r=2 -frames:v " + std::to_string(c.frames) +
                 " -c:v libx264 -qp 1 -pix_fmt yuv420p",
             "in.mp4");
        const auto result = video({"in.mp4", "--style", c.style, "-o", "out.mov", "--force"});
        ASSERT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(codedSize(folder / "out.mov"), c.coded);
        EXPECT_EQ(frameTimes(folder / "out.mov").size(), static_cast<std::size_t>(c.frames));
        make("-i " + (folder / "out.mov").string() + " -vf scale=" + c.source +
                 ":flags=area -c:v ffv1",
             "small.mkv");
        const int factor = c.style == "high" ? 2 : 4;
        EXPECT_GT(likeness(folder / "small.mkv", folder / "in.mp4",
                           {c.width / factor, c.height / factor}),
                  20);
    }
}

}  // namespace
}  // namespace quillmere
