#include "Desktop/VideoToolbox/FrameScaler.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <random>
#include <vector>

#include "Desktop/VideoToolbox/BlockSearch.h"
#include "Desktop/VideoToolbox/NoiseLevel.h"
#include "Desktop/VideoToolbox/SubpixelMotion.h"

namespace quillmere::scaler {
namespace {

constexpr PixelSize kSize{96, 64};

/// A frame with memory of its own, grey where nothing is drawn.
struct Frame {
    explicit Frame(PixelSize s) : size(s), colour{(s.width + 1) / 2, (s.height + 1) / 2} {
        for (int n = 0; n < 3; ++n) {
            const PixelSize& plane = n == 0 ? size : colour;
            planes[n].assign(static_cast<std::size_t>(plane.width) * plane.height, 128);
        }
    }
    TargetFrame target() {
        return {{planes[0].data(), size.width, size},
                {planes[1].data(), colour.width, colour},
                {planes[2].data(), colour.width, colour}};
    }
    SourceFrame source() const {
        return {{planes[0].data(), size.width, size},
                {planes[1].data(), colour.width, colour},
                {planes[2].data(), colour.width, colour}};
    }

    PixelSize size, colour;
    std::vector<std::uint8_t> planes[3];
};

using Scene = std::function<double(double x, double y)>;

double waves(double x, double y) {
    return 128 + 60 * std::sin(0.9 * x + 0.3 * y) + 40 * std::cos(0.7 * y - 0.2 * x);
}
double stripes(double x, double y) { return 128 + 90 * std::sin(1.3 * y) * std::cos(0.05 * x); }

Frame drawn(const Scene& scene, double shift = 0, float noise = 0, unsigned seed = 1) {
    Frame frame(kSize);
    std::mt19937 random(seed);
    std::normal_distribution<double> normal(0, 1);
    for (int y = 0; y < kSize.height; ++y) {
        for (int x = 0; x < kSize.width; ++x) {
            const double level = scene(x + shift, y + shift / 2) + noise * normal(random);
            frame.planes[0][static_cast<std::size_t>(y) * kSize.width + x] =
                static_cast<std::uint8_t>(std::lround(std::clamp(level, 0.0, 255.0)));
        }
    }
    return frame;
}

std::vector<std::uint8_t> scaled(FrameScaler& scaler, const Frame& frame, int factor = 2) {
    Frame target({factor * frame.size.width, factor * frame.size.height});
    scaler.scale(frame.source(), target.target());
    return target.planes[0];
}

double deviation(const std::vector<std::uint8_t>& a, const std::vector<std::uint8_t>& b) {
    double sum = 0;
    for (std::size_t n = 0; n < a.size(); ++n) sum += (a[n] - b[n]) * (a[n] - b[n]);
    return std::sqrt(sum / static_cast<double>(a.size()));
}

TEST(FrameScaler, ACutLeavesAGhost) {
    WorkerPool pool(2);
    FrameScaler scaler(kSize, 2, pool), fresh(kSize, 2, pool);
    for (int n = 0; n < 3; ++n) scaled(scaler, drawn(waves));
    const Frame after = drawn(stripes);
    EXPECT_LT(deviation(scaled(scaler, after), scaled(fresh, after)), 0.7);
}

TEST(FrameScaler, NoiseOfAStillSceneStays) {
    WorkerPool pool(2);
    FrameScaler scaler(kSize, 2, pool);
    std::vector<std::uint8_t> last;
    for (unsigned n = 0; n < 8; ++n) last = scaled(scaler, drawn(stripes, 0, 4, n));
    const auto next = scaled(scaler, drawn(stripes, 0, 4, 8));
    const double ofSource =
        deviation(drawn(stripes, 0, 4, 7).planes[0], drawn(stripes, 0, 4, 8).planes[0]);
    EXPECT_LT(deviation(last, next), 0.5 * ofSource);
}

TEST(FrameScaler, AChangeOfLightDragsBehind) {
    WorkerPool pool(2);
    FrameScaler scaler(kSize, 2, pool), fresh(kSize, 2, pool);
    const auto lit = [](double share) {
        return drawn([share](double x, double y) { return share * stripes(x, y); });
    };
    scaled(scaler, lit(0.6));
    const Frame after = lit(0.7);
    EXPECT_LT(deviation(scaled(scaler, after), scaled(fresh, after)), 1.0);
}

TEST(FrameScaler, TheResultDependsOnThreadsOrOnWhatWasForgotten) {
    WorkerPool one(1), three(3);
    FrameScaler a(kSize, 4, one), b(kSize, 4, three), fresh(kSize, 4, one);
    for (int n = 0; n < 3; ++n) {
        const Frame frame = drawn(waves, 1.3 * n, 2, static_cast<unsigned>(n));
        EXPECT_EQ(scaled(a, frame, 4), scaled(b, frame, 4)) << n;
    }
    a.forget();
    const Frame frame = drawn(waves, 1);
    EXPECT_EQ(scaled(a, frame, 4), scaled(fresh, frame, 4));
}

TEST(FrameScaler, AnEvenPictureGetsStructureAtAnySize) {
    for (const PixelSize size : {PixelSize{1, 1}, PixelSize{3, 2}, PixelSize{17, 9}}) {
        for (const int factor : {2, 4}) {
            WorkerPool pool(2);
            FrameScaler scaler(size, factor, pool);
            Frame frame(size), target({factor * size.width, factor * size.height});
            for (int n = 0; n < 3; ++n) {
                const std::uint8_t levels[] = {static_cast<std::uint8_t>(70 * n), 30, 240};
                for (int p = 0; p < 3; ++p) {
                    std::fill(frame.planes[p].begin(), frame.planes[p].end(), levels[p]);
                }
                scaler.scale(frame.source(), target.target());
                for (int p = 0; p < 3; ++p) {
                    for (const std::uint8_t level : target.planes[p]) {
                        ASSERT_NEAR(level, levels[p], 1) << size.width << " by " << factor;
                    }
                }
            }
        }
    }
}

TEST(Motion, AKnownShiftIsMissedByMoreThanAnEighth) {
    // Waves of many lengths and directions, which agree again nowhere within reach.
    const auto scene = [](double x, double y) {
        double level = 128;
        for (int n = 1; n <= 9; ++n) {
            level += 13 * std::sin(0.09 * n * (x * std::cos(2.4 * n) + y * std::sin(2.4 * n)) + n);
        }
        return level;
    };
    const auto pyramidOf = [&](double shift) {
        PaddedPlane<std::uint8_t> luma(kSize, 8);
        const Frame frame = drawn(scene, shift);
        for (int y = 0; y < kSize.height; ++y) {
            std::copy_n(frame.source().luma.row(y), kSize.width, luma.row(y));
        }
        luma.extendEdges();
        Pyramid pyramid(kSize);
        pyramid.build(luma, {0, kSize.height});
        return pyramid;
    };
    const Pyramid before = pyramidOf(0);
    for (const double shift : {0.0, 0.4, -1.75, 5.3}) {
        const Pyramid frame = pyramidOf(shift);
        BlockSearch search(kSize);
        search.searchCoarsely(frame, before, {0, kSize.height});
        for (const auto& [x, y] : {std::pair{2, 1}, std::pair{3, 2}, std::pair{3, 1}}) {
            const MotionVector found =
                refineMotion(frame, before, x, y, search.find(frame, before, x, y));
            EXPECT_NEAR(found.x / 16.0, shift, 0.125) << x << ", " << y;
            EXPECT_NEAR(found.y / 16.0, shift / 2, 0.125) << x << ", " << y;
        }
    }
}

TEST(NoiseLevel, TextureOrAChangeOfLightCountsAsNoise) {
    struct Case {
        const char* name;
        int within;   // the frame's own response, six times the deviation
        int between;  // quarters of a level against the frame before
        float least, most;
    };
    for (const Case& c : {Case{"none", 0, 0, 0, 0}, Case{"texture", 200, 2, 0, 0.5f},
                          Case{"light", 2, 200, 0, 0.5f}, Case{"noise", 16, 11, 2.5f, 4},
                          Case{"very much", 600, 600, 8, 8}}) {
        DifferenceHistogram within, between;
        for (int n = 0; n < 100; ++n) {
            within.add(c.within);
            between.add(c.between);
        }
        const float level = noiseLevel(within, between);
        EXPECT_TRUE(c.least <= level && level <= c.most) << c.name << ": " << level;
    }
}

}  // namespace
}  // namespace quillmere::scaler
