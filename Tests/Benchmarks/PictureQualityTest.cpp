#include "Benchmarks/PictureQuality.h"

#include <gtest/gtest.h>

#include <cmath>

namespace quillmere::benchmark {
namespace {

/// Waves of several lengths.
GreyPicture picture() {
    GreyPicture result({256, 192});
    for (int y = 0; y < result.size.height; ++y) {
        for (int x = 0; x < result.size.width; ++x) {
            const auto u = static_cast<float>(x), v = static_cast<float>(y);
            result.row(y)[x] = 128 + 40 * std::sin(u * v * 0.002f) + 30 * std::sin(u * 0.9f);
        }
    }
    return result;
}

TEST(PictureQualityTest, EqualPicturesAreNotFoundEqual) {
    EXPECT_TRUE(std::isinf(signalToNoise(picture(), picture())));
    EXPECT_NEAR(structuralSimilarity(picture(), picture()), 1, 1e-6);
    EXPECT_NEAR(gradientDeviation(picture(), picture()), 0, 1e-6);
}

TEST(PictureQualityTest, AShiftOfLevelsCountsForMoreThanItIs) {
    GreyPicture brighter = picture();
    for (float& pixel : brighter.pixels) pixel += 5.1f;  // a fiftieth of the range
    EXPECT_NEAR(signalToNoise(brighter, picture()), 20 * std::log10(50), 1e-3);
    EXPECT_GT(structuralSimilarity(brighter, picture()), 0.999);
    EXPECT_NEAR(gradientDeviation(brighter, picture()), 0, 1e-4);
}

TEST(PictureQualityTest, MoreLostDetailIsNotFoundWorse) {
    const GreyPicture half = enlarged(reduced(picture(), 2, Reduction::lanczos), 2);
    const GreyPicture quarter = enlarged(reduced(picture(), 4, Reduction::lanczos), 4);
    ASSERT_EQ(quarter.size, picture().size);
    EXPECT_GT(signalToNoise(half, picture()), signalToNoise(quarter, picture()) + 1);
    EXPECT_GT(structuralSimilarity(half, picture()), structuralSimilarity(quarter, picture()));
    EXPECT_LT(gradientDeviation(half, picture()), gradientDeviation(quarter, picture()));
}

}  // namespace
}  // namespace quillmere::benchmark
