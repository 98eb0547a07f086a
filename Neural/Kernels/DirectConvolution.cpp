#include "Neural/Kernels/DirectConvolution.h"

#include <algorithm>

#include "Base/Invariant.h"
#include "Neural/Kernels/ConvolutionOutput.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Neural/Kernels/DirectConvolution.cpp"
#include <hwy/foreach_target.h>
// Above must come first: it compiles this file once for each target.
#include <hwy/highway.h>

#include "Neural/Kernels/PlanePair-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quillmere::neural::HWY_NAMESPACE {
namespace {

// With the sums of this many pixels of this many groups, the weights and a broadcast fill the
// registers: 16 of them, or 32 of AVX-512 and NEON.
constexpr bool kManyRegisters = (HWY_ARCH_X86 && HWY_TARGET <= HWY_AVX3) || HWY_ARCH_ARM;
constexpr int kDirectGroups = std::max(1, (kManyRegisters ? 4 : 2) / kVectorsPerGroup / 2);
constexpr int kDirectPixels =
    std::max(1, (kManyRegisters ? 24 : 12) / (kVectorsPerGroup * kDirectGroups));
static_assert(kDirectPixels <= kOverread);

// One row of kGroups groups, whose weights lie `groupFloats` apart.
template <int kKernel, int kGroups>
HWY_NOINLINE void convolveRow(const ConvolutionCall& call, const OutputGroup* groups,
                              const float* HWY_RESTRICT firstWeights, std::size_t groupFloats,
                              std::ptrdiff_t y, std::ptrdiff_t rowStride,
                              std::ptrdiff_t pixelStride) {
    constexpr int kVectors = kGroups * kVectorsPerGroup;
    const D d;
    const PlaneGeometry& geometry = call.input.geometry;
    const auto pitch = static_cast<std::ptrdiff_t>(geometry.pitch);
    for (int x = 0; x < geometry.size.width; x += kDirectPixels) {
        V sums[kDirectPixels][kVectors];
        QUILLMERE_UNROLL
        for (int i = 0; i < kDirectPixels; ++i) {
            QUILLMERE_UNROLL
            for (int v = 0; v < kVectors; ++v) sums[i][v] = hn::Zero(d);
        }
        const float* HWY_RESTRICT weights = firstWeights;
        for (const Plane& plane : call.input.planes) {
            for (int ky = 0; ky < kKernel; ++ky) {
                const float* row =
                    plane.pixels + (y + ky - kKernel / 2) * pitch + (x - kKernel / 2) * kLanes;
                for (int kx = 0; kx < kKernel; ++kx) {
                    const float* HWY_RESTRICT pixels = row + kx * kLanes;
                    for (int lane = 0; lane < plane.channels; ++lane) {
                        V w[kVectors];
                        QUILLMERE_UNROLL
                        for (int v = 0; v < kVectors; ++v) {
                            w[v] = keepInRegister(
                                hn::Load(d, weights + v / kVectorsPerGroup * groupFloats +
                                                v % kVectorsPerGroup * kVectorLanes));
                        }
                        QUILLMERE_UNROLL
                        for (int i = 0; i < kDirectPixels; ++i) {
                            const V pixel = hn::Set(d, pixels[i * kLanes + lane]);
                            QUILLMERE_UNROLL
                            for (int v = 0; v < kVectors; ++v) {
                                sums[i][v] = hn::MulAdd(pixel, w[v], sums[i][v]);
                            }
                        }
                        weights += kGroupOutputs;
                    }
                }
            }
        }
        const int valid = std::min(kDirectPixels, geometry.size.width - x);
        QUILLMERE_UNROLL
        for (int v = kVectors - 1; v >= 0; --v) {
            const Finish finish(groups[v / kVectorsPerGroup], v % kVectorsPerGroup);
            QUILLMERE_UNROLL
            for (int i = 0; i < kDirectPixels; ++i) {
                if (i >= valid) break;
                finish(sums[i][v], y * rowStride + (x + i) * pixelStride);
            }
        }
    }
}

template <int kKernel>
void convolveRows(const ConvolutionCall& call, const ConvolutionOutput& output, int y) {
    const std::size_t groups = output.groups.size();
    const std::size_t perGroup = call.weights.weights.size() / groups;
    const float* weights = call.weights.weights.data();
    std::size_t group = 0;
    for (; group + kDirectGroups <= groups; group += kDirectGroups) {
        convolveRow<kKernel, kDirectGroups>(call, &output.groups[group], weights + group * perGroup,
                                            perGroup, y, output.rowStride, output.pixelStride);
    }
    for (; group < groups; ++group) {
        convolveRow<kKernel, 1>(call, &output.groups[group], weights + group * perGroup, perGroup,
                                y, output.rowStride, output.pixelStride);
    }
}

void DirectRow(const ConvolutionCall& call, const ConvolutionOutput& output, int y) {
    switch (call.weights.kernel) {
        case 1:
            return convolveRows<1>(call, output, y);
        case 3:
            return convolveRows<3>(call, output, y);
        case 5:
            return convolveRows<5>(call, output, y);
        default:
            invariantBroken();
    }
}

}  // namespace
}  // namespace quillmere::neural::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quillmere::neural {

HWY_EXPORT(DirectRow);

void arrangeDirect(std::span<const float> weights, ConvolutionWeights& to) {
    const std::size_t outputs = to.outputs;
    const std::size_t taps = static_cast<std::size_t>(to.kernel) * to.kernel;
    const std::size_t inputs = weights.size() / outputs / taps;
    to.weights.reserve(to.bias.size() * inputs * taps);
    for (std::size_t first = 0; first < outputs; first += kGroupOutputs) {
        std::size_t planeInput = 0;
        for (const int channels : to.inputChannels) {
            for (std::size_t tap = 0; tap < taps; ++tap) {
                for (std::size_t in = planeInput; in < planeInput + channels; ++in) {
                    for (std::size_t out = first; out < first + kGroupOutputs; ++out) {
                        to.weights.push_back(
                            out < outputs ? weights[(out * inputs + in) * taps + tap] : 0.0f);
                    }
                }
            }
            planeInput += channels;
        }
    }
}

void convolveDirect(const ConvolutionCall& call, WorkerPool& pool) {
    const ConvolutionOutput output = ConvolutionOutput::of(call);
    pool.parallelFor(static_cast<std::size_t>(call.rows.end - call.rows.first),
                     [&](std::size_t row, std::size_t) {
                         HWY_DYNAMIC_DISPATCH(DirectRow)
                         (call, output, call.rows.first + static_cast<int>(row));
                     });
}

}  // namespace quillmere::neural
#endif
