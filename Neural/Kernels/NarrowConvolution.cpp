#include "Neural/Kernels/NarrowConvolution.h"

#include <algorithm>

#include "Base/Invariant.h"
#include "Neural/Kernels/ConvolutionOutput.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Neural/Kernels/NarrowConvolution.cpp"
#include <hwy/foreach_target.h>
// Above must come first: it compiles this file once for each target.
#include <hwy/highway.h>

#include "Neural/Kernels/PlanePair-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quillmere::neural::HWY_NAMESPACE {
namespace {

// A step is the pixels that a vector covers: two of AVX-512, one, or one in two vectors.
constexpr int kStepPixels = std::max(1, kVectorLanes / kLanes);
constexpr int kStepVectors = std::max(1, kLanes / kVectorLanes);
constexpr int kRegisters = (HWY_TARGET <= HWY_AVX3 && HWY_ARCH_X86) || HWY_ARCH_ARM ? 32 : 16;

template <int kKernel, int kOutputs>
HWY_NOINLINE void narrowRow(const ConvolutionCall& call, const ConvolutionOutput& output,
                            std::ptrdiff_t y) {
    // Beside the sums, the registers hold the weights of a tap and one step's pixels.
    constexpr int kSteps = std::max(1, (kRegisters - kOutputs - 2) / (kOutputs * kStepVectors));
    constexpr int kPixels = std::min(kOverread, kSteps * kStepPixels);
    constexpr int kUsedSteps = kPixels / kStepPixels;
    const D d;
    const PlaneGeometry& geometry = call.input.geometry;
    const auto pitch = static_cast<std::ptrdiff_t>(geometry.pitch);
    const OutputGroup& group = output.groups.front();
    HWY_ALIGN float totals[kPixels][kGroupOutputs] = {};

    for (int x = 0; x < geometry.size.width; x += kPixels) {
        V sums[kUsedSteps][kStepVectors][kOutputs];
        QUILLMERE_UNROLL
        for (int s = 0; s < kUsedSteps; ++s) {
            QUILLMERE_UNROLL
            for (int v = 0; v < kStepVectors; ++v) {
                QUILLMERE_UNROLL
                for (int o = 0; o < kOutputs; ++o) sums[s][v][o] = hn::Zero(d);
            }
        }
        const float* HWY_RESTRICT weights = call.weights.weights.data();
        for (const Plane& plane : call.input.planes) {
            for (int ky = 0; ky < kKernel; ++ky) {
                const float* HWY_RESTRICT row =
                    plane.pixels + (y + ky - kKernel / 2) * pitch + (x - kKernel / 2) * kLanes;
                QUILLMERE_UNROLL
                for (int kx = 0; kx < kKernel; ++kx) {
                    QUILLMERE_UNROLL
                    for (int v = 0; v < kStepVectors; ++v) {
                        V w[kOutputs];
                        QUILLMERE_UNROLL
                        for (int o = 0; o < kOutputs; ++o) {
                            w[o] = keepInRegister(
                                hn::Load(d, weights + o * kGroupOutputs + v * kVectorLanes));
                        }
                        QUILLMERE_UNROLL
                        for (int s = 0; s < kUsedSteps; ++s) {
                            const V pixels = keepInRegister(hn::LoadU(
                                d, row + (kx + s * kStepPixels) * kLanes + v * kVectorLanes));
                            QUILLMERE_UNROLL
                            for (int o = 0; o < kOutputs; ++o) {
                                sums[s][v][o] = hn::MulAdd(pixels, w[o], sums[s][v][o]);
                            }
                        }
                    }
                    weights += kOutputs * kGroupOutputs;
                }
            }
        }
        // Each output's sum over the lanes of a pixel.
        QUILLMERE_UNROLL
        for (int s = 0; s < kUsedSteps; ++s) {
            QUILLMERE_UNROLL
            for (int o = 0; o < kOutputs; ++o) {
                V sum = sums[s][0][o];
                QUILLMERE_UNROLL
                for (int v = 1; v < kStepVectors; ++v) sum = hn::Add(sum, sums[s][v][o]);
#if HWY_MAX_BYTES >= 64
                const hn::Half<D> half;
                totals[2 * s][o] = hn::GetLane(hn::SumOfLanes(half, hn::LowerHalf(half, sum)));
                totals[2 * s + 1][o] = hn::GetLane(hn::SumOfLanes(half, hn::UpperHalf(half, sum)));
#else
                totals[s][o] = hn::GetLane(hn::SumOfLanes(d, sum));
#endif
            }
        }
        const int valid = std::min(kPixels, geometry.size.width - x);
        QUILLMERE_UNROLL
        for (int v = kVectorsPerGroup - 1; v >= 0; --v) {
            const Finish finish(group, v);
            for (int i = 0; i < valid; ++i) {
                finish(hn::Load(d, totals[i] + v * kVectorLanes),
                       y * output.rowStride + (x + i) * output.pixelStride);
            }
        }
    }
}

template <int kKernel>
void narrowRowOf(const ConvolutionCall& call, const ConvolutionOutput& output, int y) {
    switch (call.weights.outputs) {
        case 1:
            return narrowRow<kKernel, 1>(call, output, y);
        case 2:
            return narrowRow<kKernel, 2>(call, output, y);
        case 3:
            return narrowRow<kKernel, 3>(call, output, y);
        case 4:
            return narrowRow<kKernel, 4>(call, output, y);
        default:
            invariantBroken();
    }
}

void NarrowRow(const ConvolutionCall& call, const ConvolutionOutput& output, int y) {
    switch (call.weights.kernel) {
        case 1:
            return narrowRowOf<1>(call, output, y);
        case 3:
            return narrowRowOf<3>(call, output, y);
        case 5:
            return narrowRowOf<5>(call, output, y);
        default:
            invariantBroken();
    }
}

}  // namespace
}  // namespace quillmere::neural::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quillmere::neural {

HWY_EXPORT(NarrowRow);

void arrangeNarrow(std::span<const float> weights, ConvolutionWeights& to) {
    const std::size_t outputs = to.outputs;
    const std::size_t taps = static_cast<std::size_t>(to.kernel) * to.kernel;
    const std::size_t inputs = weights.size() / outputs / taps;
    to.weights.assign(to.inputChannels.size() * taps * outputs * kGroupOutputs, 0.0f);
    float* at = to.weights.data();
    std::size_t planeInput = 0;
    for (const int channels : to.inputChannels) {
        for (std::size_t tap = 0; tap < taps; ++tap) {
            for (std::size_t out = 0; out < outputs; ++out, at += kGroupOutputs) {
                for (int lane = 0; lane < channels; ++lane) {
                    const float weight = weights[(out * inputs + planeInput + lane) * taps + tap];
                    at[lane] = weight;
                    at[kLanes + lane] = weight;
                }
            }
        }
        planeInput += channels;
    }
}

void convolveNarrow(const ConvolutionCall& call, WorkerPool& pool) {
    const ConvolutionOutput output = ConvolutionOutput::of(call);
    pool.parallelFor(static_cast<std::size_t>(call.rows.end - call.rows.first),
                     [&](std::size_t row, std::size_t) {
                         HWY_DYNAMIC_DISPATCH(NarrowRow)
                         (call, output, call.rows.first + static_cast<int>(row));
                     });
}

}  // namespace quillmere::neural
#endif
