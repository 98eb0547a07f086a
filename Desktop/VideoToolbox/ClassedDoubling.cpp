#include "Desktop/VideoToolbox/ClassedDoubling.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Desktop/VideoToolbox/ClassedDoubling.cpp"
#include <hwy/foreach_target.h>
// Above must come first: it compiles what follows once for each target.
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quillmere::scaler::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using F = DoublingFilters;
using D16 = hn::CappedTag<std::int16_t, F::kPhases * F::kPitch>;
using D32 = hn::RepartitionToWide<D16>;
using V32 = hn::Vec<D32>;

// The products of one pixel for the phases of one vector, four sums a phase.
HWY_INLINE V32 PhaseSums(const std::int16_t* pixels, std::ptrdiff_t stride,
                         const std::int16_t* weights) {
    const D16 d;
    V32 low = hn::Zero(D32()), high = hn::Zero(D32());
    for (int row = 0; row < F::kRows; ++row) {
        low = hn::ReorderWidenMulAccumulate(D32(), hn::LoadDup128(d, pixels + row * stride),
                                            hn::LoadU(d, weights + row * F::kPhases * F::kPitch),
                                            low, high);
    }
    return hn::RearrangeToOddPlusEven(low, high);
}

// In each block of 128 bits: the totals of a, b, c and d.
HWY_INLINE V32 Totals(V32 a, V32 b, V32 c, V32 e) {
    const D32 d;
    const hn::Repartition<std::int64_t, D32> d64;
    const V32 ab = hn::Add(hn::InterleaveLower(d, a, b), hn::InterleaveUpper(d, a, b));
    const V32 ce = hn::Add(hn::InterleaveLower(d, c, e), hn::InterleaveUpper(d, c, e));
    const auto lower = hn::InterleaveLower(d64, hn::BitCast(d64, ab), hn::BitCast(d64, ce));
    const auto upper = hn::InterleaveUpper(d64, hn::BitCast(d64, ab), hn::BitCast(d64, ce));
    return hn::Add(hn::BitCast(d, lower), hn::BitCast(d, upper));
}

// Four pixels of two phases side by side, as eight levels.
HWY_INLINE void StoreLevels(const std::int32_t* left, const std::int32_t* right, std::uint8_t* to) {
    const hn::FixedTag<std::int32_t, 4> d;
    const hn::FixedTag<std::int16_t, 4> half;
    const hn::FixedTag<std::int16_t, 8> d16;
    const hn::FixedTag<std::uint8_t, 8> d8;
    const auto round = hn::Set(d, F::kOne / 2);
    const auto a = hn::ShiftRight<12>(hn::Add(hn::Load(d, left), round));
    const auto b = hn::ShiftRight<12>(hn::Add(hn::Load(d, right), round));
    const auto lower = hn::DemoteTo(half, hn::InterleaveLower(d, a, b));
    const auto upper = hn::DemoteTo(half, hn::InterleaveUpper(d, a, b));
    hn::StoreU(hn::DemoteTo(d8, hn::Combine(d16, upper, lower)), d8, to);
}

void DoubleRow(const std::int16_t* row, std::ptrdiff_t stride, int width,
               const std::uint8_t* classes, const std::int16_t* filters, std::uint8_t* upper,
               std::uint8_t* lower) {
    static_assert(F::kOne == 1 << 12);
    const std::int16_t* corner = row - F::kRows / 2 * stride - F::kColumns / 2;
    const int step = static_cast<int>(hn::Lanes(D16()));
    HWY_ALIGN std::int32_t sums[F::kPhases * 4];  // [phase][pixel]
    for (int x = 0; x < width; x += 4) {
        const std::int16_t* weights[4];
        for (int n = 0; n < 4; ++n) {
            weights[n] = filters + classes[x + n < width ? x + n : width - 1] * F::kClassWeights;
        }
        const std::int16_t* pixels = corner + x;
        for (int phase = 0; phase < F::kPhases * F::kPitch; phase += step) {
            hn::Store(Totals(PhaseSums(pixels, stride, weights[0] + phase),
                             PhaseSums(pixels + 1, stride, weights[1] + phase),
                             PhaseSums(pixels + 2, stride, weights[2] + phase),
                             PhaseSums(pixels + 3, stride, weights[3] + phase)),
                      D32(), sums + phase / 2);
        }
        StoreLevels(sums, sums + 4, upper + 2 * x);
        StoreLevels(sums + 8, sums + 12, lower + 2 * x);
    }
}

}  // namespace
}  // namespace quillmere::scaler::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quillmere::scaler {

HWY_EXPORT(DoubleRow);

void doubleRow(const PaddedPlane<std::int16_t>& luma, int y, const std::uint8_t* classes,
               const DoublingFilters& filters, std::uint8_t* upper, std::uint8_t* lower) {
    HWY_DYNAMIC_DISPATCH(DoubleRow)
    (luma.row(y), luma.stride(), luma.size().width, classes, filters.weights.data(), upper, lower);
}

}  // namespace quillmere::scaler
#endif
