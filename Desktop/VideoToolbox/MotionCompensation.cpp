#include "Desktop/VideoToolbox/MotionCompensation.h"

#include <hwy/cache_control.h>

#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Desktop/VideoToolbox/MotionCompensation.cpp"
#include <hwy/foreach_target.h>
// Above must come first: it compiles what follows once for each target.
#include <hwy/highway.h>

#include "Desktop/VideoToolbox/BytePairs-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quillmere::scaler::HWY_NAMESPACE {
namespace {

using namespace byte_pairs;

constexpr int kSide = 2 * MotionField::kBlock;  // of an enlarged block
constexpr int kRows = kSide + kLanczosTaps - 1;

// One block, whose first pixel lies at `from` and a part of a pixel, given by the two phases.
void WarpBlock(const std::uint8_t* from, std::ptrdiff_t stride, int phaseX, int phaseY,
               std::uint8_t* to, std::ptrdiff_t toStride) {
    if (phaseX == 0 && phaseY == 0) {
        for (int y = 0; y < kSide; ++y) std::memcpy(to + y * toStride, from + y * stride, kSide);
        return;
    }
    const int lanes = static_cast<int>(hn::Lanes(D8()));
    const LanczosFilter across(phaseX), down(phaseY);
    HWY_ALIGN std::uint8_t rows[kRows * kSide];
    for (int y = 0; y < kRows; ++y) {
        const std::uint8_t* row = from + (y - 2) * stride;
        hwy::Prefetch(row + 3 * kSide);  // for the block after the next
        for (int x = 0; x < kSide; x += lanes) {
            hn::Store(across(row + x, 1), D8(), rows + y * kSide + x);
        }
    }
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; x += lanes) {
            hn::StoreU(down(rows + (y + 2) * kSide + x, kSide), D8(), to + y * toStride + x);
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
