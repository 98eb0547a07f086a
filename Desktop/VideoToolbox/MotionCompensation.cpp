#include "Desktop/VideoToolbox/MotionCompensation.h"

#include <cstring>

#include "Desktop/VideoToolbox/LanczosTaps.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Desktop/VideoToolbox/MotionCompensation.cpp"
#include <hwy/foreach_target.h>
// Above must come first: it compiles what follows once for each target.
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quillmere::scaler::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

constexpr int kSide = 2 * MotionField::kBlock;  // of an enlarged block
constexpr int kRows = kSide + kLanczosTaps - 1;
using D16 = hn::CappedTag<std::int16_t, kSide>;
using D8 = hn::Rebind<std::uint8_t, D16>;

// One block, whose first pixel lies at `from` and a part of a pixel, given by the two phases.
void WarpBlock(const std::uint8_t* from, std::ptrdiff_t stride, int phaseX, int phaseY,
               std::uint8_t* to, std::ptrdiff_t toStride) {
    if (phaseX == 0 && phaseY == 0) {
        for (int y = 0; y < kSide; ++y) std::memcpy(to + y * toStride, from + y * stride, kSide);
        return;
    }
    const D16 d;
    const D8 d8;
    const int lanes = static_cast<int>(hn::Lanes(d));
    HWY_ALIGN std::int16_t rows[kRows * kSide];  // in thirty-seconds of a level
    const std::int16_t* taps = kLanczos[phaseX];
    from -= 2 * stride;
    for (int y = 0; y < kRows; ++y, from += stride) {
        for (int x = 0; x < kSide; x += lanes) {
            auto sum = hn::Set(d, 1);  // half of what the shift drops
            for (int tap = 0; tap < kLanczosTaps; ++tap) {
                const auto pixels = hn::PromoteTo(d, hn::LoadU(d8, from + x + tap - 2));
                sum = hn::Add(sum, hn::Mul(pixels, hn::Set(d, taps[tap])));
            }
            hn::Store(hn::ShiftRight<1>(sum), d, rows + y * kSide + x);
        }
    }
    taps = kLanczos[phaseY];
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; x += lanes) {
            const std::int16_t* column = rows + y * kSide + x;
            auto sum = hn::Set(d, 16);
            if (phaseY == 0) {  // its one tap would be 1, which a signed fraction can't hold
                sum = hn::Add(sum, hn::Load(d, column + 2 * kSide));
            } else {
                for (int tap = 0; tap < kLanczosTaps; ++tap) {
                    const auto weight = hn::Set(d, static_cast<std::int16_t>(taps[tap] * 512));
                    sum = hn::Add(sum,
                                  hn::MulFixedPoint15(hn::Load(d, column + tap * kSide), weight));
                }
            }
            hn::StoreU(hn::DemoteTo(d8, hn::ShiftRight<5>(sum)), d8, to + y * toStride + x);
        }
    }
}

}  // namespace
}  // namespace quillmere::scaler::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quillmere::scaler {

HWY_EXPORT(WarpBlock);

void warpBlocks(const PaddedPlane<std::uint8_t>& before, const MotionField& field, int blockRow,
                PaddedPlane<std::uint8_t>& to) {
    constexpr int side = 2 * MotionField::kBlock;
    // A source pixel is two here, so that a sixteenth of it is an eighth.
    static_assert(MotionVector::kUnit == 2 * kLanczosPhases);
    const auto warpBlock = HWY_DYNAMIC_DISPATCH(WarpBlock);
    for (int block = 0; block < field.blocksWide; ++block) {
        const MotionVector& vector = field.at(block, blockRow);
        warpBlock(before.row(side * blockRow + (vector.y >> 3)) + side * block + (vector.x >> 3),
                  before.stride(), vector.x & 7, vector.y & 7,
                  to.row(side * blockRow) + side * block, to.stride());
    }
}

}  // namespace quillmere::scaler
#endif
