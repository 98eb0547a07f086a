// Every stage on every instruction set of this processor, beside its slow twin.
#include <gtest/gtest.h>

#include <hwy/highway.h>
#include <cmath>
#include <random>

#include "Desktop/VideoToolbox/BlockSearch.h"
#include "Desktop/VideoToolbox/ClassedDoubling.h"
#include "Desktop/VideoToolbox/MotionCompensation.h"
#include "Tests/Desktop/VideoToolbox/ReferenceStages.h"

namespace quillmere::scaler {
namespace {

/// Soft shapes with some grain, and full contrast here and there.
PaddedPlane<std::uint8_t> scene(PixelSize size, int border, int seed) {
    PaddedPlane<std::uint8_t> plane(size, border);
    std::mt19937 random(seed);
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            const double shape = 128 + 90 * std::sin(0.31 * x + 0.1 * seed) * std::cos(0.23 * y);
            const int grain = static_cast<int>(random() % 9) - 4;
            const int level = random() % 40 == 0 ? static_cast<int>(random() % 2) * 255
                                                 : static_cast<int>(shape) + grain;
            plane.row(y)[x] = static_cast<std::uint8_t>(std::clamp(level, 0, 255));
        }
    }
    plane.extendEdges();
    return plane;
}

/// body(x, y) for each pixel.
template <class Body>
void forPixels(PixelSize size, const Body& body) {
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) body(x, y);
    }
}

class Stages : public testing::TestWithParam<PixelSize> {
protected:
    ~Stages() override {
        hwy::SetSupportedTargetsForTest(0);
        hwy::GetChosenTarget().DeInit();
    }

    template <class Check>
    void onEveryTarget(const Check& check) {
        hwy::SetSupportedTargetsForTest(0);
        for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) {
            SCOPED_TRACE(hwy::TargetName(target));
            hwy::SetSupportedTargetsForTest(target);
            hwy::GetChosenTarget().DeInit();
            check();
            if (HasFailure()) return;
        }
    }

    PixelSize size_ = GetParam();
    PixelSize large_{2 * size_.width, 2 * size_.height};
    RowBand all_{0, size_.height};
    WorkerPool pool_{2};
};

TEST_P(Stages, PyramidSmoothsOrHalvesWrongly) {
    const auto luma = scene(size_, 8, 1);
    onEveryTarget([&] {
        Pyramid pyramid(size_);
        forBands(size_.height, pool_,
                 [&](RowBand band, std::size_t) { pyramid.build(luma, band); });
        forPixels(size_, [&](int x, int y) {
            ASSERT_EQ(pyramid.full.row(y)[x], reference::smoothed(reference::clamped(luma), x, y));
        });
        forPixels(pyramid.half.size(), [&](int x, int y) {
            ASSERT_EQ(pyramid.half.row(y)[x],
                      reference::halved(reference::clamped(pyramid.full), x, y));
        });
    });
}

TEST_P(Stages, PixelsAreClassedOrFilteredWrongly) {
    const auto luma = scene(size_, 8, 2);
    onEveryTarget([&] {
        StructureClassifier classifier(size_.width);
        const std::ptrdiff_t stride = large_.width + 64;
        std::vector<std::uint8_t> rows(static_cast<std::size_t>(4 * stride));
        const auto pixels = reference::clamped(luma);
        for (int y = 0; y < size_.height; y += 2) {
            const std::uint8_t* classes = classifier.classify(luma, y);
            doubleRows(luma, y, classes, DoublingFilters::trained(), rows.data(), stride);
            for (int x = 0; x < large_.width; ++x) {
                const int c = classes[x / 4];
                ASSERT_EQ(c, reference::classOf(pixels, x / 2, y)) << x << ", " << y;
                for (int row = 0; row < std::min(4, large_.height - 2 * y); ++row) {
                    ASSERT_EQ(rows[row * stride + x],
                              reference::doubledPixel(pixels, c, x, 2 * y + row));
                }
            }
        }
    });
}

TEST(DoublingFilters, ASumLeavesSixteenBits) {
    using F = DoublingFilters;
    for (int c = 0; c < LocalStructure::kClasses; ++c) {
        for (int phase = 0; phase < F::kPhases; ++phase) {
            int above[2] = {}, below[2] = {}, all = 0;  // of the left and of the right columns
            for (int n = 0; n < F::kRows * F::kPitch; ++n) {
                const int column = n % F::kPitch;
                const int weight = F::trained().ofClass(
                    c)[(n / F::kPitch * F::kPhases + phase) * F::kPitch + column];
                (weight > 0 ? above : below)[column / 4] += std::abs(weight);
                all += weight;
            }
            EXPECT_EQ(all, F::kOne);
            EXPECT_LE(std::max({above[0], above[1], below[0], below[1]}), 2 * F::kOne);
        }
    }
}

TEST_P(Stages, WindowsAreComparedOrSlopesSummedWrongly) {
    const auto a = scene(size_, 48, 3), b = scene(size_, 48, 4);
    const auto pixelsA = reference::clamped(a), pixelsB = reference::clamped(b);
    onEveryTarget([&] {
        EXPECT_EQ(windowDifference(a.row(-2) - 3, a.stride(), b.row(3) + 4, b.stride()),
                  reference::windowDifference(pixelsA, pixelsB, {7, 5}, -3, -2));
        for (const Step shift : {Step{0, 0}, Step{-13, 6}, Step{8, -1}}) {
            EXPECT_EQ(slopeSums(a.row(-1) - 2, b.row(-1) - 2, a.stride(), shift),
                      reference::slopeSums(pixelsA, pixelsB, -2, -1, shift));
        }
    });
}

TEST_P(Stages, BlocksAreCarriedWrongly) {
    const auto before = scene(large_, kWarpBorder, 5);
    const auto pixels = reference::clamped(before);
    MotionField field(size_);
    std::mt19937 random(1);
    for (MotionVector& vector : field.vectors) {
        vector = {static_cast<int>(random() % 97) - 48, static_cast<int>(random() % 97) - 48};
    }
    field.vectors.front() = {8, -16};  // whole pixels
    field.vectors.back() = {3, 8};
    onEveryTarget([&] {
        PaddedPlane<std::uint8_t> to(large_, kWarpBorder);
        for (int row = 0; row < field.blocksHigh; ++row) warpBlocks(before, field, row, to);
        forPixels(large_, [&](int x, int y) {
            const MotionVector& vector = field.at(x / 32, y / 32);
            ASSERT_EQ(to.row(y)[x],
                      reference::lanczosPixel(pixels, 8 * x + vector.x, 8 * y + vector.y));
        });
    });
}

TEST_P(Stages, TrustFollowsTheMismatchWrongly) {
    const auto luma = scene(size_, 8, 6), carried = scene(large_, 8, 6);
    onEveryTarget([&] {
        Mismatch mismatch(size_, kTrustReach);
        DifferenceHistogram histogram;
        compareCarried(luma, carried, all_, mismatch, histogram);
        // So that all shares occur, whatever the scenes have in common.
        forPixels(size_, [&](int x, int y) {
            mismatch.row(y)[x] = static_cast<std::int16_t>(mismatch.row(y)[x] % (8 + x));
        });
        mismatch.extendEdges();
        std::vector<std::int16_t> sums;
        std::vector<std::uint8_t> shares(static_cast<std::size_t>(large_.width) + 64);
        for (const float noise : {0.0f, 2.5f, 8.0f}) {
            for (int y = 0; y < size_.height; ++y) {
                trustRow(mismatch, y, noise, sums, shares.data());
                for (int x = 0; x < large_.width; ++x) {
                    ASSERT_NEAR(shares[x],
                                reference::share(reference::clamped(mismatch), x / 2, y, noise), 1);
                }
            }
        }
        std::vector<std::uint8_t> mixed(carried.row(0), carried.row(0) + large_.width + 64);
        mixRow(carried.row(1), shares.data(), large_.width, mixed.data());
        for (int x = 0; x < large_.width; ++x) {
            const int alone = carried.row(1)[x], other = carried.row(0)[x];
            ASSERT_EQ(mixed[x], alone + (((other - alone) * shares[x] + 64) >> 7));
        }
    });
}

TEST_P(Stages, TheSourceIsProjectedBackWrongly) {
    const auto luma = scene(size_, 8, 7);
    onEveryTarget([&] {
        for (const float noise : {0.0f, 0.25f, 3.0f}) {
            auto enlarged = scene(large_, 8, 8);
            const auto before = enlarged;
            Residual residual(size_, 1);
            findResidual(luma, enlarged, all_, noise, residual);
            forPixels(size_, [&](int x, int y) {
                ASSERT_NEAR(residual.row(y)[x],
                            reference::residual(reference::clamped(luma),
                                                reference::clamped(before), x, y, noise),
                            0.7);
            });
            residual.extendEdges();
            addResidual(residual, all_, enlarged);
            forPixels(large_, [&](int x, int y) {
                ASSERT_EQ(enlarged.row(y)[x], reference::corrected(reference::clamped(residual),
                                                                   before.row(y)[x], x, y));
            });
        }
    });
}

TEST_P(Stages, AFixedDoublingIsWrong) {
    const auto from = scene(size_, kDoublingBorder, 9);
    onEveryTarget([&] {
        for (const Siting siting : {Siting::centre, Siting::left}) {
            std::vector<std::uint8_t> bytes(4 * static_cast<std::size_t>(size_.width) *
                                            size_.height);
            const TargetPlane to{bytes.data(), large_.width, large_};
            lanczosDouble(from, siting, all_, to);
            // Where an enlarged pixel lies, in eighths of a source pixel.
            const int left = siting == Siting::centre ? -2 : -1;
            // Columns come before rows here.
            const auto turned = [&](int x, int y) { return reference::clamped(from)(y, x); };
            forPixels(large_, [&](int x, int y) {
                ASSERT_EQ(to.row(y)[x], reference::lanczosPixel(turned, 4 * y - 2, 4 * x + left));
            });
        }
    });
}

INSTANTIATE_TEST_SUITE_P(Sizes, Stages,
                         testing::Values(PixelSize{67, 37}, PixelSize{32, 16}, PixelSize{1, 1}),
                         [](const auto& sizes) {
                             return std::to_string(sizes.param.width) + "By" +
                                    std::to_string(sizes.param.height);
                         });

}  // namespace
}  // namespace quillmere::scaler
