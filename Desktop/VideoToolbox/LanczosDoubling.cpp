#include "Desktop/VideoToolbox/LanczosDoubling.h"

#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Desktop/VideoToolbox/LanczosDoubling.cpp"
#include <hwy/foreach_target.h>
// Above must come first: it compiles what follows once for each target.
#include <hwy/highway.h>

#include "Desktop/VideoToolbox/BytePairs-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quillmere::scaler::HWY_NAMESPACE {
namespace {

using namespace byte_pairs;

// `count` levels between rows. `from` is the row at or before.
void BetweenRows(const std::uint8_t* from, std::ptrdiff_t stride, int phase, int count,
                 std::uint8_t* to) {
    const LanczosFilter filter(phase);
    for (int x = 0; x < count; x += static_cast<int>(hn::Lanes(D8()))) {
        hn::StoreU(filter(from + x, stride), D8(), to + x);
    }
}

// Each pixel becomes one between the pixel before and it, and one between it and the next.
void DoubleColumns(const std::uint8_t* from, int before, int after, int count, std::uint8_t* to) {
    const LanczosFilter left(before), right(after);
    for (int x = 0; x < count; x += static_cast<int>(hn::Lanes(D8()))) {
        hn::StoreInterleaved2(left(from + x - 1, 1), right(from + x, 1), D8(), to + 2 * x);
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
    std::vector<std::uint8_t> between(static_cast<std::size_t>(width) + 2 * kMargin +
                                      2 * kVectorSlack);
    std::vector<std::uint8_t> doubled(2 * static_cast<std::size_t>(width) + 2 * kVectorSlack);
    for (int y = 2 * band.first; y < std::min(2 * band.end, to.size.height); ++y) {
        const bool isUpper = y % 2 == 0;
        const int row = isUpper ? y / 2 - 1 : y / 2;
        HWY_DYNAMIC_DISPATCH(BetweenRows)
        (from.row(row) - kMargin, from.stride(), isUpper ? down.before : down.after,
         width + 2 * kMargin, between.data());
        HWY_DYNAMIC_DISPATCH(DoubleColumns)
        (between.data() + kMargin, across.before, across.after, width, doubled.data());
        std::memcpy(to.row(y), doubled.data(), static_cast<std::size_t>(to.size.width));
    }
}

}  // namespace quillmere::scaler
#endif
