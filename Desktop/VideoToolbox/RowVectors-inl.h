// Rows of levels as vectors of 16-bit numbers. Included once for each instruction set.

#if defined(QUILLMERE_ROW_VECTORS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QUILLMERE_ROW_VECTORS_INL_H
#undef QUILLMERE_ROW_VECTORS_INL_H
#else
#define QUILLMERE_ROW_VECTORS_INL_H
#endif

#include <cstdint>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quillmere::scaler::HWY_NAMESPACE {
namespace row_vectors {

namespace hn = hwy::HWY_NAMESPACE;

using D16 = hn::ScalableTag<std::int16_t>;
using V16 = hn::Vec<D16>;
using D8 = hn::Rebind<std::uint8_t, D16>;

/// Steps of loops over a row.
HWY_INLINE int lanes() { return static_cast<int>(hn::Lanes(D16())); }

HWY_INLINE V16 levels(const std::uint8_t* from) {
    return hn::PromoteTo(D16(), hn::LoadU(D8(), from));
}

/// Clamped to levels.
HWY_INLINE void storeLevels(V16 values, std::uint8_t* to) {
    hn::StoreU(hn::DemoteTo(D8(), values), D8(), to);
}

/// The even and the odd levels of twice as many.
struct Pairs {
    V16 even;
    V16 odd;
};

HWY_INLINE Pairs pairs(const std::uint8_t* from) {
    const D16 d;
    const hn::RebindToUnsigned<D16> bits;
    const auto both = hn::BitCast(bits, hn::LoadU(hn::Repartition<std::uint8_t, D16>(), from));
    return {hn::BitCast(d, hn::And(both, hn::Set(bits, 255))),
            hn::BitCast(d, hn::ShiftRight<8>(both))};
}

HWY_INLINE void storePairs(V16 even, V16 odd, std::uint8_t* to) {
    hn::StoreInterleaved2(hn::DemoteTo(D8(), even), hn::DemoteTo(D8(), odd), D8(), to);
}

/// The sums of 2 by 2 levels.
HWY_INLINE V16 sumsOfFour(const std::uint8_t* upper, const std::uint8_t* lower) {
    const Pairs a = pairs(upper), b = pairs(lower);
    return hn::Add(hn::Add(a.even, a.odd), hn::Add(b.even, b.odd));
}

}  // namespace row_vectors
}  // namespace quillmere::scaler::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
