#include "Desktop/VideoToolbox/BlockSearch.h"

#include <algorithm>
#include <cstdlib>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Desktop/VideoToolbox/BlockSearch.cpp"
#include <hwy/foreach_target.h>
// Above must come first: it compiles what follows once for each target.
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quillmere::scaler::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using D16 = hn::FixedTag<std::uint8_t, 16>;

template <class V>
HWY_INLINE V AbsoluteDifference(V a, V b) {
    return hn::Or(hn::SaturatedSub(a, b), hn::SaturatedSub(b, a));
}

// Two rows to a vector.
HWY_INLINE hn::Vec<D16> TwoRows(const std::uint8_t* row, std::ptrdiff_t stride) {
    const hn::FixedTag<std::uint8_t, 8> half;
    return hn::Combine(D16(), hn::LoadU(half, row + stride), hn::LoadU(half, row));
}

int Difference8(const std::uint8_t* a, std::ptrdiff_t strideA, const std::uint8_t* b,
                std::ptrdiff_t strideB) {
    auto sums = hn::Zero(hn::FixedTag<std::uint64_t, 2>());
    for (int y = 0; y < 8; y += 2, a += 2 * strideA, b += 2 * strideB) {
        sums = hn::Add(sums,
                       hn::SumsOf8(AbsoluteDifference(TwoRows(a, strideA), TwoRows(b, strideB))));
    }
    return static_cast<int>(hn::GetLane(hn::SumOfLanes(hn::FixedTag<std::uint64_t, 2>(), sums)));
}

// The best of all steps within `reach`, the shorter one where nothing tells them apart: a pixel's
// length costs `price`.
Step SearchAll(const std::uint8_t* a, std::ptrdiff_t strideA, const std::uint8_t* b,
               std::ptrdiff_t strideB, int reach, int price) {
    Step best;
    int least = Difference8(a, strideA, b, strideB);
    for (int y = -reach; y <= reach; ++y) {
        for (int x = -reach; x <= reach; ++x) {
            const int cost = Difference8(a, strideA, b + y * strideB + x, strideB) +
                             price * (std::abs(x) + std::abs(y));
            if (cost < least) {
                least = cost;
                best = {x, y};
            }
        }
    }
    return best;
}

}  // namespace
}  // namespace quillmere::scaler::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quillmere::scaler {
namespace {

HWY_EXPORT(Difference8);
HWY_EXPORT(SearchAll);

// A pixel of length must save two levels at a row's pixels of the window.
constexpr int kPrice = 2;

/// A window, and the least of what was tried on it.
class Window {
public:
    Window(const PaddedPlane<std::uint8_t>& frame, const PaddedPlane<std::uint8_t>& before, int x,
           int y)
        : pixels_(frame.row(y) + x), before_(before.row(y) + x), stride_(frame.stride()) {}

    void attempt(Step step) {
        if (step == best_ && least_ != INT32_MAX) return;
        const int difference =
            windowDifference(pixels_, stride_, before_ + step.y * stride_ + step.x, stride_);
        if (difference < least_) {
            least_ = difference;
            best_ = step;
        }
    }
    void attemptAround(Step centre) {
        for (const Step step : {Step{-1, 0}, Step{1, 0}, Step{0, -1}, Step{0, 1}}) {
            attempt({centre.x + step.x, centre.y + step.y});
        }
    }
    Step best() const { return best_; }

private:
    const std::uint8_t* pixels_;
    const std::uint8_t* before_;
    std::ptrdiff_t stride_;
    int least_ = INT32_MAX;
    Step best_;
};

Step doubled(Step step) { return {2 * step.x, 2 * step.y}; }

}  // namespace

int windowDifference(const std::uint8_t* a, std::ptrdiff_t strideA, const std::uint8_t* b,
                     std::ptrdiff_t strideB) {
    return HWY_DYNAMIC_DISPATCH(Difference8)(a, strideA, b, strideB);
}

BlockSearch::BlockSearch(PixelSize source) {
    const MotionField field(source);
    wide_ = (field.blocksWide + 1) / 2;
    high_ = (field.blocksHigh + 1) / 2;
    coarse_.resize(static_cast<std::size_t>(wide_) * high_);
}

Step BlockSearch::coarseAt(int x, int y) const {
    x = std::clamp(x, 0, wide_ - 1);
    y = std::clamp(y, 0, high_ - 1);
    return coarse_[static_cast<std::size_t>(y) * wide_ + x];
}

void BlockSearch::searchCoarsely(const Pyramid& frame, const Pyramid& before, RowBand band) {
    const std::ptrdiff_t stride = frame.quarter.stride();
    for (int y = band.first / kCoarseRows; y * kCoarseRows < band.end; ++y) {
        for (int x = 0; x < wide_; ++x) {
            coarse_[static_cast<std::size_t>(y) * wide_ + x] = HWY_DYNAMIC_DISPATCH(SearchAll)(
                frame.quarter.row(8 * y) + 8 * x, stride, before.quarter.row(8 * y) + 8 * x, stride,
                kReach, kPrice);
        }
    }
}

Step BlockSearch::find(const Pyramid& frame, const Pyramid& before, int blockX, int blockY) const {
    // The coarse neighbours that are nearest to this quarter of their own block.
    const int x = blockX / 2, y = blockY / 2;
    const int besideX = x + (blockX % 2 == 0 ? -1 : 1), besideY = y + (blockY % 2 == 0 ? -1 : 1);
    Window window(frame.half, before.half, 8 * blockX, 8 * blockY);
    window.attempt({});
    window.attempt(doubled(coarseAt(x, y)));
    window.attempt(doubled(coarseAt(besideX, y)));
    window.attempt(doubled(coarseAt(x, besideY)));
    window.attempt(doubled(coarseAt(besideX, besideY)));
    window.attemptAround(window.best());
    return doubled(window.best());
}

}  // namespace quillmere::scaler
#endif
