#include "Desktop/VideoToolbox/LanczosDoubling.h"

#include <cstring>

#include "Desktop/VideoToolbox/LanczosTaps.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Desktop/VideoToolbox/LanczosDoubling.cpp"
#include <hwy/foreach_target.h>
// Above must come first: it compiles what follows once for each target.
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quillmere::scaler::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using D16 = hn::ScalableTag<std::int16_t>;
using D8 = hn::Rebind<std::uint8_t, D16>;

// `count` pixels between rows, in thirty-seconds of a level. `from` is the row at or before.
void BetweenRows(const std::uint8_t* from, std::ptrdiff_t stride, const std::int16_t* taps,
                 int count, std::int16_t* HWY_RESTRICT to) {
    const D16 d;
    for (int x = 0; x < count; x += static_cast<int>(hn::Lanes(d))) {
        auto sum = hn::Set(d, 1);  // half of what the shift drops
        for (int tap = 0; tap < kLanczosTaps; ++tap) {
            const std::uint8_t* row = from + (tap - 2) * stride;
            sum = hn::Add(
                sum, hn::Mul(hn::PromoteTo(d, hn::LoadU(D8(), row + x)), hn::Set(d, taps[tap])));
        }
        hn::StoreU(hn::ShiftRight<1>(sum), d, to + x);
    }
}

// Levels at a part of a pixel after `from`.
HWY_INLINE auto BetweenPixels(const std::int16_t* from, const std::int16_t* taps) {
    const D16 d;
    auto sum = hn::Set(d, 16);
    for (int tap = 0; tap < kLanczosTaps; ++tap) {
        const auto weight = hn::Set(d, static_cast<std::int16_t>(taps[tap] * 512));
        sum = hn::Add(sum, hn::MulFixedPoint15(hn::LoadU(d, from + tap - 2), weight));
    }
    return hn::DemoteTo(D8(), hn::ShiftRight<5>(sum));
}

// Each pixel becomes one between the pixel before and it, and one between it and the next.
void DoubleColumns(const std::int16_t* from, const std::int16_t* before, const std::int16_t* after,
                   int count, std::uint8_t* HWY_RESTRICT to) {
    const int lanes = static_cast<int>(hn::Lanes(D16()));
    for (int x = 0; x < count; x += lanes) {
        hn::StoreInterleaved2(BetweenPixels(from + x - 1, before), BetweenPixels(from + x, after),
                              D8(), to + 2 * x);
    }
}

}  // namespace
}  // namespace quillmere::scaler::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quillmere::scaler {
namespace {

HWY_EXPORT(BetweenRows);
HWY_EXPORT(DoubleColumns);

/// The eighths of a pixel at which the two new ones lie, after the pixel before and after the pixel
/// itself. Centred: a quarter to the left and to the right. With the first sample in line with
/// brightness both before and after, which is itself enlarged about its centre: an eighth to the
/// left, and half a pixel further.
struct Phases {
    int before;
    int after;
};

constexpr Phases phasesOf(Siting siting) {
    return siting == Siting::centre ? Phases{6, 2} : Phases{7, 3};
}

constexpr int kMargin = 8;  // what the filter reads on each side, and a little more
constexpr int kVectorSlack = 64;

}  // namespace

void lanczosDouble(const PaddedPlane<std::uint8_t>& from, Siting siting, RowBand band,
                   TargetPlane to) {
    const int width = from.size().width;
    const Phases across = phasesOf(siting), down = phasesOf(Siting::centre);
    std::vector<std::int16_t> between(static_cast<std::size_t>(width) + 2 * kMargin +
                                      2 * kVectorSlack);
    std::vector<std::uint8_t> doubled(2 * static_cast<std::size_t>(width) + 2 * kVectorSlack);
    for (int y = 2 * band.first; y < std::min(2 * band.end, to.size.height); ++y) {
        const bool isUpper = y % 2 == 0;
        const int row = isUpper ? y / 2 - 1 : y / 2;
        HWY_DYNAMIC_DISPATCH(BetweenRows)
        (from.row(row) - kMargin, from.stride(), kLanczos[isUpper ? down.before : down.after],
         width + 2 * kMargin, between.data());
        HWY_DYNAMIC_DISPATCH(DoubleColumns)
        (between.data() + kMargin, kLanczos[across.before], kLanczos[across.after], width,
         doubled.data());
        std::memcpy(to.row(y), doubled.data(), static_cast<std::size_t>(to.size.width));
    }
}

}  // namespace quillmere::scaler
#endif
