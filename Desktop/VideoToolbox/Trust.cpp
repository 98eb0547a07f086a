#include "Desktop/VideoToolbox/Trust.h"

#include <cstdlib>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Desktop/VideoToolbox/Trust.cpp"
#include <hwy/foreach_target.h>
// Above must come first: it compiles what follows once for each target.
#include <hwy/highway.h>

#include "Desktop/VideoToolbox/RowVectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quillmere::scaler::HWY_NAMESPACE {
namespace {

using namespace row_vectors;

void CompareRow(const std::uint8_t* source, const std::uint8_t* upper, const std::uint8_t* lower,
                int width, std::int16_t* mismatch) {
    for (int x = 0; x < width; x += lanes()) {
        const auto sum = sumsOfFour(upper + 2 * x, lower + 2 * x);
        hn::StoreU(hn::Sub(hn::ShiftLeft<2>(levels(source + x)), sum), D16(), mismatch + x);
    }
}

// Sums of five rows: as they are, and of their sizes. Up to a vector more than `count` is written.
void SumColumns(const std::int16_t* centre, std::ptrdiff_t stride, int count, std::int16_t* sums,
                std::int16_t* sizes) {
    const D16 d;
    for (int x = 0; x < count; x += lanes()) {
        auto sum = hn::Zero(d), size = hn::Zero(d);
        for (int row = -kTrustReach; row <= kTrustReach; ++row) {
            const auto off = hn::LoadU(d, centre + row * stride + x);
            sum = hn::Add(sum, off);
            size = hn::Add(size, hn::Abs(off));
        }
        hn::StoreU(sum, d, sums + x);
        hn::StoreU(size, d, sizes + x);
    }
}

HWY_INLINE hn::Vec<D16> SumOfFive(const std::int16_t* from) {
    const D16 d;
    auto sum = hn::LoadU(d, from);
    for (int n = 1; n <= 2 * kTrustReach; ++n) sum = hn::Add(sum, hn::LoadU(d, from + n));
    return sum;
}

// share = (refused - sum) * slope, within its bounds; `slope` in 1/32768.
void ShareRow(const std::int16_t* sums, const std::int16_t* sizes, int width, std::int16_t refused,
              std::int16_t slope, std::uint8_t* shares) {
    const D16 d;
    const hn::Rebind<std::uint8_t, D16> d8;
    for (int x = 0; x < width; x += lanes()) {
        const auto shift = hn::Abs(SumOfFive(sums + x));
        const auto weighed = hn::SaturatedAdd(shift, hn::SaturatedAdd(shift, shift));
        const auto worse = hn::Max(SumOfFive(sizes + x), weighed);
        const auto left = hn::Max(hn::Sub(hn::Set(d, refused), worse), hn::Zero(d));
        const auto share = hn::Min(hn::MulFixedPoint15(left, hn::Set(d, slope)),
                                   hn::Set(d, std::int16_t{kFullShare}));
        const auto bytes = hn::DemoteTo(d8, share);
        hn::StoreInterleaved2(bytes, bytes, d8, shares + 2 * x);
    }
}

void MixRow(const std::uint8_t* enlarged, const std::uint8_t* shares, int count,
            std::uint8_t* carried) {
    const auto round = hn::Set(D16(), 64);
    for (int x = 0; x < count; x += lanes()) {
        const auto alone = levels(enlarged + x);
        const auto difference = hn::Sub(levels(carried + x), alone);
        const auto part = hn::Add(hn::Mul(difference, levels(shares + x)), round);
        storeLevels(hn::Add(alone, hn::ShiftRight<7>(part)), carried + x);
    }
}

}  // namespace
}  // namespace quillmere::scaler::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quillmere::scaler {

HWY_EXPORT(CompareRow);
HWY_EXPORT(SumColumns);
HWY_EXPORT(ShareRow);
HWY_EXPORT(MixRow);

namespace {

constexpr int kVectorSlack = 64;

}  // namespace

void compareCarried(const PaddedPlane<std::uint8_t>& luma, const PaddedPlane<std::uint8_t>& carried,
                    RowBand band, Mismatch& mismatch, DifferenceHistogram& histogram) {
    const int width = luma.size().width;
    for (int y = band.first; y < band.end; ++y) {
        HWY_DYNAMIC_DISPATCH(CompareRow)
        (luma.row(y), carried.row(2 * y), carried.row(2 * y + 1), width, mismatch.row(y));
        if (y % kNoiseStep != 0) continue;
        for (int x = 0; x < width; x += kNoiseStep) {
            histogram.add(std::abs(mismatch.row(y)[x]));
        }
    }
}

void trustRow(const Mismatch& mismatch, int y, float noise, std::vector<std::int16_t>& sums,
              std::uint8_t* shares) {
    const int width = mismatch.size().width;
    const int count = width + 2 * kTrustReach;
    const int pitch = count + kVectorSlack;
    sums.resize(2 * static_cast<std::size_t>(pitch));
    std::int16_t* sizes = sums.data() + pitch;
    HWY_DYNAMIC_DISPATCH(SumColumns)
    (mismatch.row(y) - kTrustReach, mismatch.stride(), count, sums.data(), sizes);
    const float believed = 1 + noise, refused = 6 + 1.6f * noise;  // in levels
    constexpr float unitsOfLevel = 4 * 25;
    const float slope = kFullShare / ((refused - believed) * unitsOfLevel);
    HWY_DYNAMIC_DISPATCH(ShareRow)
    (sums.data(), sizes, width, static_cast<std::int16_t>(refused * unitsOfLevel),
     static_cast<std::int16_t>(slope * 32768), shares);
}

void mixRow(const std::uint8_t* enlarged, const std::uint8_t* shares, int count,
            std::uint8_t* carried) {
    HWY_DYNAMIC_DISPATCH(MixRow)(enlarged, shares, count, carried);
}

}  // namespace quillmere::scaler
#endif
