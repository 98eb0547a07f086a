#include "Desktop/VideoToolbox/ClassedDoubling.h"

#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Desktop/VideoToolbox/ClassedDoubling.cpp"
#include <hwy/foreach_target.h>
// Above must come first: it compiles what follows once for each target.
#include <hwy/highway.h>

#include "Desktop/VideoToolbox/BytePairs-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quillmere::scaler::HWY_NAMESPACE {
namespace {

using namespace byte_pairs;

using F = DoublingFilters;
using D32 = hn::RepartitionToWide<D16>;
static_assert(hn::MaxLanes(D8()) <= F::kPhases * F::kPitch);

// Eight pixels of a row, for each phase.
HWY_INLINE V8 PixelsOf(const std::uint8_t* from) {
    std::uint64_t eight;
    std::memcpy(&eight, from, sizeof eight);
    return hn::BitCast(D8(), hn::Set(hn::Repartition<std::uint64_t, D8>(), eight));
}

// The sums of neighbours, of `a` and then of `b` in each block of 128 bits.
HWY_INLINE V16 PairSums(V16 a, V16 b) {
    const auto widened = [](V16 v) {
        auto high = hn::Zero(D32());
        const auto low = hn::ReorderWidenMulAccumulate(D32(), v, hn::Set(D16(), 1), high, high);
        return hn::RearrangeToOddPlusEven(low, high);
    };
    return hn::ReorderDemote2To(D16(), widened(a), widened(b));
}

// The sums, still in halves, for the pixels of two rows and two columns. `from` is the first pixel
// that the first of them looks at.
HWY_INLINE void FilterBlock(const std::uint8_t* from, std::ptrdiff_t stride,
                            const std::int8_t* weights, V16& upperSums, V16& lowerSums) {
    VS8 rows[F::kRows];
    QUILLMERE_UNROLL
    for (int row = 0; row < F::kRows; ++row) {
        rows[row] = hn::LoadU(DS8(), weights + row * F::kPhases * F::kPitch);
    }
    V16 upper[2], lower[2];
    QUILLMERE_UNROLL
    for (int x = 0; x < 2; ++x) {
        upper[x] = pairProducts(PixelsOf(from + x), rows[0]);
        lower[x] = pairProducts(PixelsOf(from + F::kRows * stride + x), rows[F::kRows - 1]);
        QUILLMERE_UNROLL
        for (int row = 1; row < F::kRows; ++row) {
            const V8 pixels = PixelsOf(from + row * stride + x);
            upper[x] = hn::Add(upper[x], pairProducts(pixels, rows[row]));
            lower[x] = hn::Add(lower[x], pairProducts(pixels, rows[row - 1]));
        }
    }
    upperSums = PairSums(upper[0], upper[1]);
    lowerSums = PairSums(lower[0], lower[1]);
}

// Four pixels' levels, a row for each block of 128 bits.
HWY_INLINE void StoreLevels(V16 left, V16 right, std::uint8_t* to, std::ptrdiff_t stride) {
    const D16 d;
    const hn::Rebind<std::uint8_t, D16> d8;
    static_assert(F::kOne == 1 << 6);
    const auto sums = hn::Add(PairSums(left, right), hn::Set(d, F::kOne / 2));
    HWY_ALIGN std::uint8_t bytes[16];
    hn::StoreU(hn::DemoteTo(d8, hn::ShiftRight<6>(sums)), d8, bytes);
    for (std::size_t n = 0; n < hn::Lanes(d8); n += 8, to += stride) std::memcpy(to, bytes + n, 8);
}

void DoubleRows(const std::uint8_t* row, std::ptrdiff_t stride, int width,
                const std::uint8_t* classes, const std::int8_t* filters, std::uint8_t* to,
                std::ptrdiff_t toStride) {
    const std::uint8_t* corner = row - F::kRows / 2 * stride - F::kColumns / 2;
    // Phases that fill a vector, and the enlarged rows that they belong to.
    const int step = static_cast<int>(hn::Lanes(D8()));
    const int rowsAtOnce = step / (F::kPhases * F::kPitch / 2);
    for (int x = 0; x < width; x += 4) {
        const std::int8_t* left = filters + classes[x / 2] * F::kClassWeights;
        const std::int8_t* right = filters + classes[x / 2 + 1] * F::kClassWeights;
        for (int pass = 0; pass * rowsAtOnce < 2; ++pass) {
            V16 upper[2], lower[2];
            FilterBlock(corner + x, stride, left + pass * step, upper[0], lower[0]);
            FilterBlock(corner + x + 2, stride, right + pass * step, upper[1], lower[1]);
            std::uint8_t* first = to + pass * rowsAtOnce * toStride + 2 * x;
            StoreLevels(upper[0], upper[1], first, toStride);
            StoreLevels(lower[0], lower[1], first + 2 * toStride, toStride);
        }
    }
}

}  // namespace
}  // namespace quillmere::scaler::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quillmere::scaler {

HWY_EXPORT(DoubleRows);

void doubleRows(const PaddedPlane<std::uint8_t>& luma, int y, const std::uint8_t* classes,
                const DoublingFilters& filters, std::uint8_t* to, std::ptrdiff_t stride) {
    HWY_DYNAMIC_DISPATCH(DoubleRows)
    (luma.row(y), luma.stride(), luma.size().width, classes, filters.weights.data(), to, stride);
}

}  // namespace quillmere::scaler
#endif
