// Lazy, banded rendering against the eager twin: every pixel has to be the same.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <random>
#include <thread>
#include <vector>

#include "Base/WorkerPool.h"
#include "Desktop/CoreImage/DesktopCoreImage.h"
#include "Tests/Contracts/GraphicsPictures.h"
#include "Tests/Fakes/FakeCoreImage.h"

namespace quillmere {
namespace {

/// One image, described to both. The random steps keep what the next steps need.
struct Pair {
    CIImageRef lazy;
    CIImageRef eager;
};

class Composer {
public:
    Composer(unsigned seed, CoreImage& lazy, CoreImage& eager)
        : random_(seed), lazy_(lazy), eager_(eager) {}

    int number(int least, int most) {
        return std::uniform_int_distribution<int>(least, most)(random_);
    }

    Rect rectAround(const Rect& extent) {
        const int width = static_cast<int>(extent.width);
        const int height = static_cast<int>(extent.height);
        return {extent.x + number(-9, width), extent.y + number(-9, height),
                double(number(1, width + 9)), double(number(1, height + 9))};
    }

    Pair leaf() {
        const int width = number(1, 40) * 4;
        const int height = number(1, 12) * 4;
        std::vector<std::uint32_t> colours(static_cast<std::size_t>(width * height));
        const bool opaque = number(0, 2) == 0;
        for (std::uint32_t& colour : colours) {
            const auto alpha = static_cast<std::uint32_t>(opaque ? 255 : number(0, 255));
            const auto value = static_cast<std::uint32_t>(number(0, static_cast<int>(alpha)));
            colour = value << 24 | (alpha - value) << 16 | alpha / 2 << 8 | alpha;
        }
        const UIImage picture(bitmapOf(width, colours));
        return {lazy_.imageWithImage(picture), eager_.imageWithImage(picture)};
    }

    Pair step(const std::vector<Pair>& known) {
        const Pair& one = known[static_cast<std::size_t>(number(0, int(known.size()) - 1))];
        const Pair& two = known[static_cast<std::size_t>(number(0, int(known.size()) - 1))];
        switch (number(0, 4)) {
            case 0: {
                const Rect rect = rectAround(one.eager->extent());
                return {one.lazy->imageByCroppingToRect(rect),
                        one.eager->imageByCroppingToRect(rect)};
            }
            case 1:
                return transformed(one,
                                   AffineTransform::translation(number(-50, 50), number(-50, 50)));
            case 2:
                return reduced(one, number(2, 4));
            default:
                return {one.lazy->imageByCompositingOverImage(two.lazy),
                        one.eager->imageByCompositingOverImage(two.eager)};
        }
    }

private:
    static Pair transformed(const Pair& image, const AffineTransform& transform) {
        return {image.lazy->imageByApplyingTransform(transform),
                image.eager->imageByApplyingTransform(transform)};
    }

    // Cuts to the grid first: edges must be multiples of n.
    static Pair reduced(const Pair& image, int n) {
        const Rect extent = image.eager->extent();
        const double x = std::ceil(extent.x / n) * n;
        const double y = std::ceil(extent.y / n) * n;
        const Rect grid{x, y, std::max(0.0, std::floor(extent.maxX() / n) * n - x),
                        std::max(0.0, std::floor(extent.maxY() / n) * n - y)};
        return transformed(
            {image.lazy->imageByCroppingToRect(grid), image.eager->imageByCroppingToRect(grid)},
            AffineTransform::scale(1.0 / n, 1.0 / n));
    }

    std::mt19937 random_;
    CoreImage& lazy_;
    CoreImage& eager_;
};

TEST(LazyRendering, RandomCompositionsAreThoseOfTheEagerTwin) {
    CallLog log;
    WorkerPool pool(3);
    DesktopCoreImage lazy(pool);
    FakeCoreImage eager(log);
    const auto lazyContext = lazy.makeContext({});
    const auto eagerContext = eager.makeContext({});
    for (unsigned seed = 0; seed < 60; ++seed) {
        Composer composer(seed, lazy, eager);
        std::vector<Pair> known;
        for (int i = 0; i < 4; ++i) known.push_back(composer.leaf());
        for (int i = 0; i < 20; ++i) {
            known.push_back(composer.step(known));
            const auto& [one, twin] = known.back();
            ASSERT_EQ(one->extent(), twin->extent()) << "seed " << seed << ", step " << i;
            const Rect rect = composer.rectAround(twin->extent());
            ASSERT_EQ(coloursOf(*lazyContext->createCGImage(*one, rect)),
                      coloursOf(*eagerContext->createCGImage(*twin, rect)))
                << "seed " << seed << ", step " << i;
        }
    }
}

// Large enough for many bands, whose edges must not show.
TEST(LazyRendering, BandsOfALargeReducedPictureJoinWithoutASeam) {
    CallLog log;
    WorkerPool pool(3);
    DesktopCoreImage lazy(pool);
    FakeCoreImage eager(log);
    std::vector<std::uint32_t> colours(1500 * 900);
    for (std::uint32_t i = 0; i < colours.size(); ++i) colours[i] = i * 2654435761u | 0xff;
    const UIImage picture(bitmapOf(1500, colours));
    const auto describe = [&](CoreImage& coreImage) {
        const CIImageRef image = coreImage.imageWithImage(picture);
        return image->imageByApplyingTransform(AffineTransform::translation(300, 100))
            ->imageByCompositingOverImage(image)
            ->imageByApplyingTransform(AffineTransform::scale(0.5, 0.5));
    };
    const CIImageRef one = describe(lazy);
    EXPECT_EQ(one->extent(), (Rect{0, 0, 900, 500}));
    EXPECT_EQ(coloursOf(*lazy.makeContext({})->createCGImage(*one, one->extent())),
              coloursOf(*eager.makeContext({})->createCGImage(*describe(eager), one->extent())));
}

TEST(LazyRendering, ThreadsThatRenderOneImageDoNotDisturbEachOther) {
    WorkerPool pool(2);
    DesktopCoreImage coreImage(pool);
    CallLog log;
    FakeCoreImage unused(log);
    Composer composer(7, coreImage, unused);
    CIImageRef image = composer.leaf().lazy;
    for (int i = 0; i < 5; ++i) image = image->imageByCompositingOverImage(composer.leaf().lazy);
    const auto context = coreImage.makeContext({});
    const auto expected = coloursOf(*context->createCGImage(*image, image->extent()));
    std::atomic<int> different = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 20; ++i) {
                if (coloursOf(*context->createCGImage(*image, image->extent())) != expected) {
                    ++different;
                }
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(different, 0);
}

}  // namespace
}  // namespace quillmere
