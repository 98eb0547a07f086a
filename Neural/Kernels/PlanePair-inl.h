// Vectors of up to 16 channels from and to a pair of planes, for one instruction set at a time.
#if defined(QUILLMERE_PLANE_PAIR_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QUILLMERE_PLANE_PAIR_INL_H
#undef QUILLMERE_PLANE_PAIR_INL_H
#else
#define QUILLMERE_PLANE_PAIR_INL_H
#endif

#include <hwy/highway.h>

#include "Neural/Kernels/ConvolutionOutput.h"

// Loops over arrays of vectors, which stay in registers only if they're gone.
#define QUILLMERE_UNROLL _Pragma("GCC unroll 40")

HWY_BEFORE_NAMESPACE();
namespace quillmere::neural::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using D = hn::CappedTag<float, kGroupOutputs>;
using V = hn::Vec<D>;
constexpr int kVectorLanes = static_cast<int>(hn::MaxLanes(D()));
constexpr int kVectorsPerGroup = kGroupOutputs / kVectorLanes;

// g++ 12 would otherwise fold this load into each of its uses and stall on memory.
HWY_INLINE V keepInRegister(V value) {
#if HWY_ARCH_X86 && HWY_COMPILER_GCC
    __asm__("" : "+v"(value.raw));
#endif
    return value;
}

// Channels kVectorLanes * vector and up of the pixel `offset` floats from (0, 0). Both planes of
// the pair must be there.
HWY_INLINE V loadPair(const PlanePair& pair, int vector, std::ptrdiff_t offset) {
    const D d;
#if HWY_MAX_BYTES >= 64
    (void)vector;
    const hn::Half<D> half;
    return hn::Combine(d, hn::LoadU(half, pair.planes[1] + offset),
                       hn::LoadU(half, pair.planes[0] + offset));
#else
    const int lane = vector * kVectorLanes;
    return hn::LoadU(d, pair.planes[lane / kLanes] + offset + lane % kLanes);
#endif
}

// The second plane may be missing.
HWY_INLINE void storePair(V value, const PlanePair& pair, int vector, std::ptrdiff_t offset) {
#if HWY_MAX_BYTES >= 64
    (void)vector;
    const hn::Half<D> half;
    hn::StoreU(hn::LowerHalf(half, value), half, pair.planes[0] + offset);
    if (pair.planes[1] != nullptr) {
        hn::StoreU(hn::UpperHalf(half, value), half, pair.planes[1] + offset);
    }
#else
    const int lane = vector * kVectorLanes;
    float* plane = pair.planes[lane / kLanes];
    if (plane != nullptr) hn::StoreU(value, D(), plane + offset + lane % kLanes);
#endif
}

// What is left to do once the products are summed: activation, addends, and the store.
HWY_INLINE void finish(V sum, V slope, const OutputGroup& group, int vector,
                       std::ptrdiff_t offset) {
    const D d;
    const V zero = hn::Zero(d);
    V result = hn::MulAdd(slope, hn::Min(sum, zero), hn::Max(sum, zero));
    for (const OutputGroup::Added& added : group.addends) {
        // A missing second plane is never stored, so that anything may be added to it.
        PlanePair from = added.from;
        if (from.planes[1] == nullptr) from.planes[1] = from.planes[0];
        result = hn::MulAdd(loadPair(from, vector, offset), hn::Set(d, added.factor), result);
    }
    storePair(result, group.to, vector, offset);
}

}  // namespace quillmere::neural::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
