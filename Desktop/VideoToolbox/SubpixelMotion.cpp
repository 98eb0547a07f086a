#include "Desktop/VideoToolbox/SubpixelMotion.h"

#include <cmath>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Desktop/VideoToolbox/SubpixelMotion.cpp"
#include <hwy/foreach_target.h>
// Above must come first: it compiles what follows once for each target.
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quillmere::scaler::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

constexpr int kSide = MotionField::kBlock;

// A sum of products that keeps both halves of what the instruction gives.
class ProductSum {
public:
    using D16 = hn::CappedTag<std::int16_t, kSide>;
    using D32 = hn::RepartitionToWide<D16>;

    // Spelt out, or it would be compiled for the wrong target.
    HWY_INLINE ProductSum() : low_(hn::Zero(D32())), high_(low_) {}

    HWY_INLINE void add(hn::Vec<D16> a, hn::Vec<D16> b) {
        low_ = hn::ReorderWidenMulAccumulate(D32(), a, b, low_, high_);
    }
    HWY_INLINE std::int32_t total() const {
        return hn::GetLane(hn::SumOfLanes(D32(), hn::Add(low_, high_)));
    }

private:
    hn::Vec<D32> low_;
    hn::Vec<D32> high_;
};

HWY_INLINE auto Pixels(const std::uint8_t* from) {
    const ProductSum::D16 d;
    return hn::PromoteTo(d, hn::LoadU(hn::Rebind<std::uint8_t, ProductSum::D16>(), from));
}

SlopeSums SumSlopes(const std::uint8_t* frame, const std::uint8_t* before, std::ptrdiff_t stride,
                    int fractionX, int fractionY) {
    const ProductSum::D16 d;
    const auto weight = [&](int eighths) { return hn::Set(d, static_cast<std::int16_t>(eighths)); };
    const auto left = weight(8 - fractionX), right = weight(fractionX);
    const auto above = weight(8 - fractionY), below = weight(fractionY);
    const auto between = [&](const std::uint8_t* from) {
        return hn::Add(hn::Mul(Pixels(from), left), hn::Mul(Pixels(from + 1), right));
    };
    ProductSum xx, xy, yy, xd, yd;
    for (int x = 0; x < kSide; x += static_cast<int>(hn::Lanes(d))) {
        const std::uint8_t* at = frame + x;
        const std::uint8_t* from = before + x;
        // What a row shares with the next one stays.
        auto last = Pixels(at - stride), here = Pixels(at), upper = between(from);
        for (int y = 0; y < kSide; ++y, at += stride, from += stride) {
            const auto next = Pixels(at + stride), lower = between(from + stride);
            const auto gx = hn::Sub(Pixels(at + 1), Pixels(at - 1)), gy = hn::Sub(next, last);
            const auto shifted = hn::Add(hn::Mul(upper, above), hn::Mul(lower, below));
            const auto difference = hn::ShiftRight<2>(hn::Sub(hn::ShiftLeft<6>(here), shifted));
            xx.add(gx, gx);
            xy.add(gx, gy);
            yy.add(gy, gy);
            xd.add(gx, difference);
            yd.add(gy, difference);
            last = here;
            here = next;
            upper = lower;
        }
    }
    return {xx.total(), xy.total(), yy.total(), xd.total(), yd.total()};
}

}  // namespace
}  // namespace quillmere::scaler::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quillmere::scaler {
namespace {

HWY_EXPORT(SumSlopes);

constexpr int kIterations = 2;
// In pixels: what a search result can be wrong by, and a little more.
constexpr float kFurthest = 2;
// Added to the squares' sums: holds windows whose contrast is mere rounding.
constexpr float kFirmness = 80;

}  // namespace

SlopeSums slopeSums(const std::uint8_t* frame, const std::uint8_t* before, std::ptrdiff_t stride,
                    Step shift) {
    const std::uint8_t* from = before + (shift.y >> 3) * stride + (shift.x >> 3);
    return HWY_DYNAMIC_DISPATCH(SumSlopes)(frame, from, stride, shift.x & 7, shift.y & 7);
}

MotionVector refineMotion(const Pyramid& frame, const Pyramid& before, int blockX, int blockY,
                          Step step) {
    const int x = MotionField::kBlock * blockX, y = MotionField::kBlock * blockY;
    float moveX = 0, moveY = 0;  // from `step`, in pixels
    for (int iteration = 0; iteration < kIterations; ++iteration) {
        const Step tried{8 * step.x + static_cast<int>(std::lround(8 * moveX)),
                         8 * step.y + static_cast<int>(std::lround(8 * moveY))};
        const SlopeSums sums =
            slopeSums(frame.full.row(y) + x, before.full.row(y) + x, frame.full.stride(), tried);
        const float xx = static_cast<float>(sums.xx) + kFirmness;
        const float yy = static_cast<float>(sums.yy) + kFirmness;
        const float xy = static_cast<float>(sums.xy);
        const float xd = static_cast<float>(sums.xd), yd = static_cast<float>(sums.yd);
        // An eighth brings the doubled slope and the sixteenfold difference together.
        const float scale = 1 / (8 * (xx * yy - xy * xy));
        moveX = static_cast<float>(tried.x) / 8 - static_cast<float>(step.x) +
                (xd * yy - yd * xy) * scale;
        moveY = static_cast<float>(tried.y) / 8 - static_cast<float>(step.y) +
                (yd * xx - xd * xy) * scale;
        if (!(std::abs(moveX) <= kFurthest && std::abs(moveY) <= kFurthest)) {
            moveX = moveY = 0;
            break;
        }
    }
    constexpr int unit = MotionVector::kUnit;
    return {unit * step.x + static_cast<int>(std::lround(unit * moveX)),
            unit * step.y + static_cast<int>(std::lround(unit * moveY))};
}

}  // namespace quillmere::scaler
#endif
