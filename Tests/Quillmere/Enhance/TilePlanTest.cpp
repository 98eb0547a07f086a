#include "Quillmere/Models/Enhance/TilePlan.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace quillmere {
namespace {

TEST(TilePlan, CountsTilesAndCoversThePicture) {
    struct Case {
        Size working;
        std::int64_t columns, rows;
        Size stitched;
    };
    const Case cases[] = {
        {{1, 1}, 1, 1, {1000, 1000}},       {{244, 244}, 1, 1, {1000, 1000}},
        {{245, 244}, 2, 1, {1958, 1000}},   {{244, 245}, 1, 2, {1000, 1994}},
        {{256, 256}, 2, 2, {1958, 1994}},   {{488, 488}, 2, 2, {1958, 1994}},
        {{1000, 750}, 5, 4, {4886, 3946}},  {{1024, 1024}, 5, 5, {4886, 4922}},
        {{2048, 1536}, 9, 7, {8790, 6874}}, {{2048, 2048}, 9, 9, {8790, 8826}},
    };
    for (const Case& c : cases) {
        const TilePlan plan(c.working);
        SCOPED_TRACE(testing::Message() << c.working.width << " by " << c.working.height);
        EXPECT_EQ(plan.columns(), c.columns);
        EXPECT_EQ(plan.rows(), c.rows);
        EXPECT_EQ(plan.count(), c.columns * c.rows);
        const Rect extent = plan.stitchedExtent();
        EXPECT_EQ(extent.x, 0);
        EXPECT_EQ(extent.maxY(), static_cast<double>(c.rows) * 976 + 1024);
        EXPECT_EQ(extent.y, c.rows == 1 ? 1000 : 982);
        EXPECT_EQ((Size{extent.width, extent.height}), c.stitched);
        EXPECT_GE(extent.width, 4 * c.working.width);
        EXPECT_GE(extent.height, 4 * c.working.height);
        EXPECT_EQ(plan.resultCut(2), (Rect{0, 0, 2 * c.working.width, 2 * c.working.height}));
    }
}

// The seams as they lie in the result, counted from the picture's top left corner.
TEST(TilePlan, SeamsLieWhereBothTilesHaveSeenThePicture) {
    const TilePlan plan({1000, 750});
    const double top = plan.stitchedExtent().maxY();
    for (std::int64_t row = 0; row < plan.rows(); ++row) {
        for (std::int64_t column = 0; column < plan.columns(); ++column) {
            const Tile tile = plan.tile(row, column);
            SCOPED_TRACE(testing::Message() << "row " << row << " column " << column);
            const double left = tile.crop.x + tile.offset.x;
            const double upper = top - (tile.crop.maxY() + tile.offset.y);
            const auto c = static_cast<double>(column);
            const auto r = static_cast<double>(row);
            EXPECT_EQ(left, column == 0 ? 0 : c * 976 + 6);
            EXPECT_EQ(left + tile.crop.width, column == 0 ? 1000 : c * 976 + 982);
            EXPECT_EQ(upper, row == 0 ? 0 : r * 976 + 18);
            EXPECT_EQ(upper + tile.crop.height, row == 0 ? 1000 : r * 976 + 1018);
            EXPECT_EQ(tile.cut.x * 4, c * 976);
            EXPECT_EQ(tile.cut.y * 4, r * 976);
        }
    }
}

TEST(TilePlan, OnlyTheOuterTilesAreSmearedAndTheContentIsDrawnLast) {
    using Draws = std::vector<Point>;
    const Draws corner = {{1, 0}, {0, 1}, {1, 1}, {0, 0}};
    const Draws right = {{1, 0}, {0, 0}};
    const Draws bottom = {{0, 1}, {0, 0}};
    const Draws inner = {{0, 0}};
    struct Case {
        Size working;
        std::int64_t row, column;
        Draws draws;
        Rect cut;
    };
    const Case cases[] = {
        {{244, 244}, 0, 0, corner, {0, 0, 244, 244}},
        {{1, 1}, 0, 0, corner, {0, 0, 1, 1}},
        {{256, 100}, 0, 0, bottom, {0, 0, 256, 100}},  // takes all 256, yet is not the last
        {{256, 100}, 0, 1, corner, {244, 0, 12, 100}},
        {{245, 500}, 1, 1, right, {244, 244, 1, 256}},
        {{488, 600}, 0, 1, right, {244, 0, 244, 256}},
        {{600, 600}, 1, 1, inner, {244, 244, 256, 256}},
        {{600, 600}, 2, 1, bottom, {244, 488, 256, 112}},
        {{600, 600}, 1, 0, inner, {0, 244, 256, 256}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.working.width << " by " << c.working.height << " row "
                                        << c.row << " column " << c.column);
        const Tile tile = TilePlan(c.working).tile(c.row, c.column);
        EXPECT_EQ(tile.draws, c.draws);
        EXPECT_EQ(tile.cut, c.cut);
    }
}

TEST(TilePlan, APictureWithoutPixelsHasNoTiles) {
    for (const Size size : {Size{0, 0}, Size{0, 100}, Size{100, 0}}) {
        const TilePlan plan(size);
        EXPECT_EQ(plan.count(), 0);
        EXPECT_EQ(plan.stitchedExtent(), Rect{});
    }
}

TEST(TilePlanDeathTest, SizesThatCannotBePlannedEndTheProcess) {
    constexpr double infinite = std::numeric_limits<double>::infinity();
    for (const Size size :
         {Size{NAN, 1}, Size{1, NAN}, Size{infinite, 1}, Size{1, -infinite}, Size{1e18, 1e18}}) {
        EXPECT_EXIT(TilePlan{size}, testing::KilledBySignal(SIGABRT), "");
    }
}

}  // namespace
}  // namespace quillmere
