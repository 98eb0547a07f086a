// The part of the motion that is finer than a pixel, which super-resolution lives on.
#pragma once

#include "Desktop/VideoToolbox/BlockSearch.h"
#include "Desktop/VideoToolbox/MotionField.h"

namespace quillmere::scaler {

/// The sums of the least-squares problem over a window of 16 by 16 pixels, all of them exact. With
/// the frame's central differences gx, gy (twice the slope) and d, sixteen times the difference
/// between the frame and the shifted frame before, rounded down.
struct SlopeSums {
    std::int32_t xx = 0;  // sum of gx * gx
    std::int32_t xy = 0;
    std::int32_t yy = 0;
    std::int32_t xd = 0;  // sum of gx * d
    std::int32_t yd = 0;

    friend bool operator==(const SlopeSums&, const SlopeSums&) = default;
};

/// The sums for the window whose first pixel is `frame`, against `before` at `shift`, in eighths of
/// a pixel: positions between pixels are interpolated linearly.
SlopeSums slopeSums(const std::uint8_t* frame, const std::uint8_t* before, std::ptrdiff_t stride,
                    Step shift);

/// Refines a block's step by two iterations of Lucas and Kanade ("An iterative image registration
/// technique", 1981) on its window. A window without texture, or one whose solution runs further
/// away than a search result can be wrong, keeps the step.
MotionVector refineMotion(const Pyramid& frame, const Pyramid& before, int blockX, int blockY,
                          Step step);

}  // namespace quillmere::scaler
