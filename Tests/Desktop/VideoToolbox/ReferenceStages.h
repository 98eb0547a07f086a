// The stages of the frame scaler, one pixel at a time and as their definitions read.
#pragma once

#include <functional>
#include <vector>

#include "Desktop/VideoToolbox/BackProjection.h"
#include "Desktop/VideoToolbox/DoublingFilters.h"
#include "Desktop/VideoToolbox/LanczosDoubling.h"
#include "Desktop/VideoToolbox/MotionField.h"
#include "Desktop/VideoToolbox/SubpixelMotion.h"
#include "Desktop/VideoToolbox/Trust.h"

namespace quillmere::scaler::reference {

/// A plane as a function that knows no edge.
using Pixels = std::function<int(int x, int y)>;

template <class T>
Pixels clamped(const PaddedPlane<T>& plane) {
    return [&plane](int x, int y) {
        return int{plane.row(
            std::clamp(y, 0, plane.size().height - 1))[std::clamp(x, 0, plane.size().width - 1)]};
    };
}

int smoothed(const Pixels& luma, int x, int y);
int halved(const Pixels& plane, int x, int y);
int classOf(const Pixels& luma, int x, int y);
/// A pixel of the enlarged frame.
int doubledPixel(const Pixels& luma, int classOfSource, int x, int y);
int windowDifference(const Pixels& a, const Pixels& b, Step step, int x, int y);
SlopeSums slopeSums(const Pixels& frame, const Pixels& before, int x, int y, Step shift);
/// Between pixels, at eighths: of rows, and then between those.
int lanczosPixel(const Pixels& plane, int eighthsX, int eighthsY);
double share(const Pixels& mismatch, int x, int y, float noise);
double residual(const Pixels& luma, const Pixels& enlarged, int x, int y, float noise);
int corrected(const Pixels& residual, int level, int x, int y);

}  // namespace quillmere::scaler::reference
