// Sums of products of levels and small weights, two at a time: what filters are made of. Included
// once for each instruction set.
#if defined(QUILLMERE_BYTE_PAIRS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QUILLMERE_BYTE_PAIRS_INL_H
#undef QUILLMERE_BYTE_PAIRS_INL_H
#else
#define QUILLMERE_BYTE_PAIRS_INL_H
#endif

#include <hwy/highway.h>

#include "Desktop/VideoToolbox/LanczosTaps.h"

// Loops over arrays of vectors, which stay in registers only if they're gone.
#define QUILLMERE_UNROLL _Pragma("GCC unroll 8")

HWY_BEFORE_NAMESPACE();
namespace quillmere::scaler::HWY_NAMESPACE {
namespace byte_pairs {

namespace hn = hwy::HWY_NAMESPACE;

using D8 = hn::CappedTag<std::uint8_t, 32>;
using V8 = hn::Vec<D8>;
using DS8 = hn::RebindToSigned<D8>;
using VS8 = hn::Vec<DS8>;
using D16 = hn::RepartitionToWide<DS8>;
using V16 = hn::Vec<D16>;

/// levels[2n] * weights[2n] + levels[2n + 1] * weights[2n + 1], which must fit.
HWY_INLINE V16 pairProducts(V8 levels, VS8 weights) {
#if HWY_ARCH_X86 && HWY_TARGET <= HWY_AVX2
    return V16{_mm256_maddubs_epi16(levels.raw, weights.raw)};
#elif HWY_ARCH_X86 && HWY_TARGET <= HWY_SSSE3
    return V16{_mm_maddubs_epi16(levels.raw, weights.raw)};
#else
    const D16 d;
    const hn::RebindToUnsigned<D16> bits;
    const auto even = hn::And(hn::BitCast(d, levels), hn::Set(d, 255));
    const auto odd = hn::BitCast(d, hn::ShiftRight<8>(hn::BitCast(bits, levels)));
    const auto both = hn::BitCast(d, weights);
    return hn::Add(hn::Mul(even, hn::ShiftRight<8>(hn::ShiftLeft<8>(both))),
                   hn::Mul(odd, hn::ShiftRight<8>(both)));
#endif
}

/// As levels, in each block of 128 bits those of `lower` before those of `upper`.
HWY_INLINE V8 packedLevels(V16 lower, V16 upper) {
#if HWY_ARCH_X86 && HWY_TARGET <= HWY_AVX2
    return V8{_mm256_packus_epi16(lower.raw, upper.raw)};
#else
    const hn::Half<D8> half;
    return hn::Combine(D8(), hn::DemoteTo(half, upper), hn::DemoteTo(half, lower));
#endif
}

/// Lanczos's filter at one of its phases.
class LanczosFilter {
public:
    explicit HWY_INLINE LanczosFilter(int phase)
        : first_(pair(phase, 0)), second_(pair(phase, 2)), third_(pair(phase, 4)) {}

    /// A vector of levels at the phase after `from`. What is next to a pixel lies `step` further.
    HWY_INLINE V8 operator()(const std::uint8_t* from, std::ptrdiff_t step) const {
        V16 lower = hn::Set(D16(), 32), upper = lower;
        const auto add = [&](std::ptrdiff_t tap, VS8 weights) {
            const V8 a = hn::LoadU(D8(), from + tap * step);
            const V8 b = hn::LoadU(D8(), from + (tap + 1) * step);
            lower = hn::Add(lower, pairProducts(hn::InterleaveLower(D8(), a, b), weights));
            upper = hn::Add(upper, pairProducts(hn::InterleaveUpper(D8(), a, b), weights));
        };
        add(-2, first_);
        add(0, second_);
        add(2, third_);
        return packedLevels(hn::ShiftRight<6>(lower), hn::ShiftRight<6>(upper));
    }

private:
    static HWY_INLINE VS8 pair(int phase, int tap) {
        const auto byte = [&](int n) { return kLanczos[phase][n] & 255; };
        const auto both = static_cast<std::int16_t>(byte(tap) | byte(tap + 1) << 8);
        return hn::BitCast(DS8(), hn::Set(D16(), both));
    }

    VS8 first_, second_, third_;
};

}  // namespace byte_pairs
}  // namespace quillmere::scaler::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
