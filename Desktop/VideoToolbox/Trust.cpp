#include "Desktop/VideoToolbox/Trust.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Desktop/VideoToolbox/Trust.cpp"
#include <hwy/foreach_target.h>
// Above must come first: it compiles what follows once for each target.
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quillmere::scaler::HWY_NAMESPACE {
namespace {

// Plain loops: the compiler turns them into vectors of each target.

void CompareRow(const std::uint8_t* HWY_RESTRICT source, const std::uint8_t* HWY_RESTRICT upper,
                const std::uint8_t* HWY_RESTRICT lower, int width,
                std::uint16_t* HWY_RESTRICT mismatch) {
    for (int x = 0; x < width; ++x) {
        const auto sum = static_cast<std::int16_t>(upper[2 * x] + upper[2 * x + 1] + lower[2 * x] +
                                                   lower[2 * x + 1]);
        const auto off = static_cast<std::int16_t>(4 * source[x] - sum);
        mismatch[x] = static_cast<std::uint16_t>(off < 0 ? -off : off);
    }
}

void SumColumns(const std::uint16_t* HWY_RESTRICT centre, std::ptrdiff_t stride, int count,
                int* HWY_RESTRICT sums) {
    for (int x = 0; x < count; ++x) {
        const std::uint16_t* at = centre + x;
        sums[x] = at[-2 * stride] + at[-stride] + at[0] + at[stride] + at[2 * stride];
    }
}

// share = highest - slope * sum, within its bounds.
void ShareRow(const int* HWY_RESTRICT sums, int width, float highest, float slope,
              std::uint8_t* HWY_RESTRICT shares) {
    for (int x = 0; x < width; ++x) {
        const int sum = sums[x] + sums[x + 1] + sums[x + 2] + sums[x + 3] + sums[x + 4];
        float share = highest - slope * static_cast<float>(sum);
        share = share < 0 ? 0 : share;
        share = share > kFullShare ? kFullShare : share;
        const auto rounded = static_cast<std::uint8_t>(static_cast<int>(share + 0.5f));
        shares[2 * x] = rounded;
        shares[2 * x + 1] = rounded;
    }
}

void MixRow(const std::uint8_t* HWY_RESTRICT enlarged, const std::uint8_t* HWY_RESTRICT shares,
            int count, std::uint8_t* HWY_RESTRICT carried) {
    for (int x = 0; x < count; ++x) {
        const auto difference = static_cast<std::int16_t>(carried[x] - enlarged[x]);
        const auto part = static_cast<std::int16_t>(difference * shares[x] + 64);
        carried[x] = static_cast<std::uint8_t>(enlarged[x] + (part >> 7));
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

void compareCarried(const PaddedPlane<std::uint8_t>& luma,
                    const PaddedPlane<std::uint8_t>& carried, RowBand band, Mismatch& mismatch,
                    DifferenceHistogram& histogram) {
    const int width = luma.size().width;
    for (int y = band.first; y < band.end; ++y) {
        HWY_DYNAMIC_DISPATCH(CompareRow)
        (luma.row(y), carried.row(2 * y), carried.row(2 * y + 1), width, mismatch.row(y));
        if (y % kNoiseStep != 0) continue;
        for (int x = 0; x < width; x += kNoiseStep) histogram.add(mismatch.row(y)[x]);
    }
}

void trustRow(const Mismatch& mismatch, int y, float noise, std::vector<int>& sums,
              std::uint8_t* shares) {
    const int width = mismatch.size().width;
    sums.resize(static_cast<std::size_t>(width) + 2 * kTrustReach);
    HWY_DYNAMIC_DISPATCH(SumColumns)
    (mismatch.row(y) - kTrustReach, mismatch.stride(), width + 2 * kTrustReach, sums.data());
    const float believed = 1 + noise, refused = 6 + 1.6f * noise;  // in levels
    constexpr float unitsOfLevel = 4 * 25;
    const float slope = kFullShare / (refused - believed);
    HWY_DYNAMIC_DISPATCH(ShareRow)
    (sums.data(), width, refused * slope, slope / unitsOfLevel, shares);
}

void mixRow(const std::uint8_t* enlarged, const std::uint8_t* shares, int count,
            std::uint8_t* carried) {
    HWY_DYNAMIC_DISPATCH(MixRow)(enlarged, shares, count, carried);
}

}  // namespace quillmere::scaler
#endif
