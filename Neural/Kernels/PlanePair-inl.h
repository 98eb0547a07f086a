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

// Channels kVectorLanes * vector and up of the pixel `offset` floats from (0, 0).
HWY_INLINE V loadPair(const PlanePair& pair, int vector, std::ptrdiff_t offset) {
    const D d;
#if HWY_MAX_BYTES >= 64
    (void)vector;
    const hn::Half<D> half;
    return hn::Combine(d, hn::LoadU(half, pair.second + offset),
                       hn::LoadU(half, pair.first + offset));
#else
    const int lane = vector * kVectorLanes;
    const float* plane = lane < kLanes ? pair.first : pair.second;
    return hn::LoadU(d, plane + offset + lane % kLanes);
#endif
}

// A group's vectors must be stored in descending order: see PlanePair.
HWY_INLINE void storePair(V value, const PlanePair& pair, int vector, std::ptrdiff_t offset) {
#if HWY_MAX_BYTES >= 64
    (void)vector;
    const hn::Half<D> half;
    hn::StoreU(hn::UpperHalf(half, value), half, pair.second + offset);
    hn::StoreU(hn::LowerHalf(half, value), half, pair.first + offset);
#else
    const int lane = vector * kVectorLanes;
    float* plane = lane < kLanes ? pair.first : pair.second;
    hn::StoreU(value, D(), plane + offset + lane % kLanes);
#endif
}

// What is left to do once the products are summed: activation, addends, and the store. A copy of
// a group's pointers, which stores to its planes can't be thought to change.
class Finish {
public:
    Finish(const OutputGroup& group, int vector)
        : to_(group.to),
          addends_(group.addends.data()),
          addendCount_(group.addends.size()),
          vector_(vector),
          bias_(hn::Load(D(), group.bias + vector * kVectorLanes)),
          slope_(hn::Load(D(), group.slopes + vector * kVectorLanes)) {}

    // `offset` from pixel (0, 0) in floats.
    HWY_INLINE void operator()(V sum, std::ptrdiff_t offset) const {
        const D d;
        const V zero = hn::Zero(d);
        const V biased = hn::Add(sum, bias_);
        V result = hn::MulAdd(slope_, hn::Min(biased, zero), hn::Max(biased, zero));
        for (std::size_t i = 0; i < addendCount_; ++i) {
            const V added = loadPair(addends_[i].from, vector_, offset);
            result = hn::MulAdd(added, hn::Set(d, addends_[i].factor), result);
        }
        storePair(result, to_, vector_, offset);
    }

private:
    PlanePair to_;
    const OutputGroup::Added* addends_;
    std::size_t addendCount_;
    int vector_;
    V bias_;
    V slope_;
};

}  // namespace quillmere::neural::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
