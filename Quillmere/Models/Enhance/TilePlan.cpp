#include "Quillmere/Models/Enhance/TilePlan.h"

#include <algorithm>
#include <cmath>

#include "Base/Invariant.h"

namespace quillmere {
namespace {

constexpr double outputStride = TilePlan::stride * TilePlan::modelScale;
constexpr double seamCrop = 6;       // left of every column but the first, below every later row
constexpr double firstRowCrop = 24;  // below the first row
constexpr double firstColumnKept = 1000;
constexpr double laterColumnKept = 976;
constexpr double rowKept = 1000;  // of every row: the axes differ on purpose

std::int64_t tilesAlong(double side) {
    const double tiles = std::ceil(side / TilePlan::stride);
    // 2^62 is exact in both types and leaves no doubt about the cast.
    if (!std::isfinite(side) || std::abs(tiles) > 0x1p62) invariantBroken();
    return std::max<std::int64_t>(0, static_cast<std::int64_t>(tiles));
}

}  // namespace

TilePlan::TilePlan(Size working)
    : working_(working), columns_(tilesAlong(working.width)), rows_(tilesAlong(working.height)) {
    std::int64_t product = 0;
    if (__builtin_mul_overflow(columns_, rows_, &product)) invariantBroken();
}

Tile TilePlan::tile(std::int64_t row, std::int64_t column) const {
    const double x = static_cast<double>(column) * stride;
    const double y = static_cast<double>(row) * stride;
    const bool lastColumn = column + 1 >= columns_;
    const bool lastRow = row + 1 >= rows_;

    Tile tile;
    tile.cut = {x, y, std::min<double>(tileSize, working_.width - x),
                std::min<double>(tileSize, working_.height - y)};

    if (lastColumn) tile.draws.push_back({1, 0});
    if (lastRow) tile.draws.push_back({0, 1});
    if (lastColumn && lastRow) tile.draws.push_back({1, 1});
    tile.draws.push_back({0, 0});

    tile.crop = {column == 0 ? 0 : seamCrop, row == 0 ? firstRowCrop : seamCrop,
                 column == 0 ? firstColumnKept : laterColumnKept, rowKept};
    tile.offset = {x * modelScale, static_cast<double>(rows_ - row) * outputStride};
    return tile;
}

Rect TilePlan::stitchedExtent() const {
    if (count() == 0) return {};
    const Tile topLeft = tile(0, 0);
    const Tile bottomRight = tile(rows_ - 1, columns_ - 1);
    const double bottom = bottomRight.crop.y + bottomRight.offset.y;
    return {0, bottom, bottomRight.crop.maxX() + bottomRight.offset.x,
            topLeft.crop.maxY() + topLeft.offset.y - bottom};
}

Rect TilePlan::resultCut(int scale) const {
    return {0, 0, scale * working_.width, scale * working_.height};
}

}  // namespace quillmere
