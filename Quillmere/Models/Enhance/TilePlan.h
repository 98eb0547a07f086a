// The arithmetic of the tiles: where a picture is cut, and where each enlarged tile goes.
#pragma once

#include <cstdint>
#include <vector>

#include "Base/Geometry.h"

namespace quillmere {

/// One tile of a plan.
///
/// The tile's output is four times as large as its canvas, 1024 by 1024, and lies with its bottom
/// left corner at the origin of a space whose y axis points up.
struct Tile {
    /// What is cut from the working picture: pixels, origin at the top left.
    Rect cut;
    /// Where the cut is drawn on the transparent canvas of 256 by 256, in this order, origin at
    /// the top left. All but the last draw smear the outermost line of pixels beyond the content,
    /// so that the network doesn't see a hard edge against transparency.
    std::vector<Point> draws;
    /// The part of the output that is kept, in the output's space.
    Rect crop;
    /// How far the kept part moves in the space of the stitched picture, whose y axis points up.
    Point offset;
};

/// How a working picture of one size is cut into overlapping tiles, and their outputs stitched.
///
/// Tiles begin every 244 pixels and are up to 256 wide and high; a later tile lies over an
/// earlier one. Of each output but the outermost a margin is dropped on all sides, so that the
/// seams lie within the overlap, where both tiles have seen the picture around them.
class TilePlan {
public:
    static constexpr int tileSize = 256;
    static constexpr int stride = 244;
    static constexpr int modelScale = 4;

    /// `working` is the size of the working picture in pixels. A size that is not finite, or whose
    /// count of tiles overflows, is a broken invariant.
    explicit TilePlan(Size working);

    std::int64_t columns() const { return columns_; }
    std::int64_t rows() const { return rows_; }
    std::int64_t count() const { return columns_ * rows_; }

    /// 0 <= `row` < rows() from the top, 0 <= `column` < columns() from the left.
    Tile tile(std::int64_t row, std::int64_t column) const;

    /// What the stitched outputs cover together. It begins at the left and top edge of the picture
    /// and reaches at least four times the picture's size to the right and down.
    Rect stitchedExtent() const;

    /// The part of the rendered stitched picture that is the result, `scale` times the working
    /// picture: pixels, origin at the top left.
    Rect resultCut(int scale) const;

private:
    Size working_;
    std::int64_t columns_;
    std::int64_t rows_;
};

}  // namespace quillmere
