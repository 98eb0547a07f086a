#include "Desktop/VideoToolbox/ClassedDoubling.h"

#include <cstring>

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
using D8 = hn::CappedTag<std::uint8_t, F::kPhases * F::kPitch>;
using V8 = hn::Vec<D8>;
using DS8 = hn::RebindToSigned<D8>;
using D16 = hn::RepartitionToWide<DS8>;
using V16 = hn::Vec<D16>;
using D32 = hn::RepartitionToWide<D16>;

// Loops over arrays of vectors, which stay in registers only if they're gone.
#define QUILLMERE_UNROLL _Pragma("GCC unroll 8")

// The products of pixels and weights, added in pairs.
HWY_INLINE V16 PairProducts(V8 pixels, hn::Vec<DS8> weights) {
#if HWY_ARCH_X86 && HWY_TARGET <= HWY_AVX2
    return V16{_mm256_maddubs_epi16(pixels.raw, weights.raw)};
#elif HWY_ARCH_X86 && HWY_TARGET <= HWY_SSSE3
    return V16{_mm_maddubs_epi16(pixels.raw, weights.raw)};
#else
    const D16 d;
    const auto both = hn::BitCast(d, pixels), weighed = hn::BitCast(d, weights);
    const auto even =
        hn::Mul(hn::And(both, hn::Set(d, 255)), hn::ShiftRight<8>(hn::ShiftLeft<8>(weighed)));
    const hn::RebindToUnsigned<D16> bits;
    const auto odd = hn::Mul(hn::BitCast(d, hn::ShiftRight<8>(hn::BitCast(bits, pixels))),
                             hn::ShiftRight<8>(weighed));
    return hn::Add(even, odd);
#endif
}

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

// The products of the pixels of two rows and two columns whose first neighbour is `from`.
HWY_INLINE void FilterBlock(const std::uint8_t* from, std::ptrdiff_t stride,
                            const std::int8_t* weights, V16* upper, V16* lower) {
    hn::Vec<DS8> rows[F::kRows];
    QUILLMERE_UNROLL
    for (int row = 0; row < F::kRows; ++row) {
        rows[row] = hn::LoadU(DS8(), weights + row * F::kPhases * F::kPitch);
    }
    QUILLMERE_UNROLL
    for (int x = 0; x < 2; ++x) {
        upper[x] = PairProducts(PixelsOf(from + x), rows[0]);
        lower[x] = PairProducts(PixelsOf(from + F::kRows * stride + x), rows[F::kRows - 1]);
        QUILLMERE_UNROLL
        for (int row = 1; row < F::kRows; ++row) {
            const V8 pixels = PixelsOf(from + row * stride + x);
            upper[x] = hn::Add(upper[x], PairProducts(pixels, rows[row]));
            lower[x] = hn::Add(lower[x], PairProducts(pixels, rows[row - 1]));
        }
    }
}

// Four pixels' levels, a row for each block of 128 bits.
HWY_INLINE void StoreLevels(const V16* pixels, std::uint8_t* to, std::ptrdiff_t stride) {
    const D16 d;
    const hn::Rebind<std::uint8_t, D16> d8;
    const auto sums = PairSums(PairSums(pixels[0], pixels[1]), PairSums(pixels[2], pixels[3]));
    static_assert(F::kOne == 1 << 6);
    const auto levels = hn::ShiftRight<6>(hn::Add(sums, hn::Set(d, F::kOne / 2)));
    HWY_ALIGN std::uint8_t bytes[16];
    hn::StoreU(hn::DemoteTo(d8, levels), d8, bytes);
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
            V16 upper[4], lower[4];
            FilterBlock(corner + x, stride, left + pass * step, upper, lower);
            FilterBlock(corner + x + 2, stride, right + pass * step, upper + 2, lower + 2);
            std::uint8_t* first = to + pass * rowsAtOnce * toStride + 2 * x;
            StoreLevels(upper, first, toStride);
            StoreLevels(lower, first + 2 * toStride, toStride);
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
