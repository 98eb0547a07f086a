#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Neural/Kernels/Convolution.cpp"
#include <hwy/foreach_target.h>
// Above must come first: it compiles this file once for each target.
#include <hwy/highway.h>

#include <algorithm>

#include "Base/Invariant.h"
#include "Neural/Kernels/Convolution.h"

HWY_BEFORE_NAMESPACE();
namespace quillmere::neural::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using D = hn::CappedTag<float, kLanes>;
using V = hn::Vec<D>;
constexpr int kVectorLanes = static_cast<int>(hn::MaxLanes(D()));
constexpr int kVectorsPerPlane = kLanes / kVectorLanes;
// 12 sums, the weights and one broadcast fill the 16 registers of SSE4 and AVX2.
constexpr int kSums = 12;

// g++ 12 would otherwise fold this load into each of its uses and stall on memory.
HWY_INLINE V keepInRegister(V value) {
#if HWY_ARCH_X86 && HWY_COMPILER_GCC
    __asm__("" : "+x"(value.raw));
#endif
    return value;
}

struct Job {
    const ConvolutionWeights& weights;
    const PlaneList& input;
    const PlaneList& output;
};

// One row of kPlanes planes of the output, from plane `first` on.
template <int kKernel, int kPlanes>
HWY_NOINLINE void convolveRow(const Job& job, int first, const float* HWY_RESTRICT blockWeights,
                              int y) {
    constexpr int kVectors = kPlanes * kVectorsPerPlane;
    constexpr int kPixels = std::max(1, kSums / kVectors);
    static_assert(kPixels <= kOverread);
    const D d;
    const PlaneGeometry& geometry = job.input.geometry;
    const std::ptrdiff_t pitch = static_cast<std::ptrdiff_t>(geometry.pitch);
    const float* bias = job.weights.bias.data() + first * kLanes;
    const float* slopes = job.weights.slopes.data() + first * kLanes;

    for (int x = 0; x < geometry.size.width; x += kPixels) {
        V sums[kPixels][kVectors];
        for (int i = 0; i < kPixels; ++i) {
            for (int v = 0; v < kVectors; ++v) sums[i][v] = hn::Load(d, bias + v * kVectorLanes);
        }
        const float* HWY_RESTRICT weights = blockWeights;
        for (const Plane& plane : job.input.planes) {
            for (int ky = 0; ky < kKernel; ++ky) {
                const float* row =
                    plane.pixels + (y + ky - kKernel / 2) * pitch + (x - kKernel / 2) * kLanes;
                for (int kx = 0; kx < kKernel; ++kx) {
                    const float* HWY_RESTRICT pixels = row + kx * kLanes;
                    for (int lane = 0; lane < plane.channels; ++lane) {
                        V w[kVectors];
                        for (int v = 0; v < kVectors; ++v) {
                            w[v] = keepInRegister(hn::Load(d, weights + v * kVectorLanes));
                        }
                        for (int i = 0; i < kPixels; ++i) {
                            const V pixel = hn::Set(d, pixels[i * kLanes + lane]);
                            for (int v = 0; v < kVectors; ++v) {
                                sums[i][v] = hn::MulAdd(pixel, w[v], sums[i][v]);
                            }
                        }
                        weights += kPlanes * kLanes;
                    }
                }
            }
        }
        const int valid = std::min(kPixels, geometry.size.width - x);
        for (int i = 0; i < kPixels; ++i) {
            if (i >= valid) break;
            for (int v = 0; v < kVectors; ++v) {
                const V zero = hn::Zero(d);
                const V slope = hn::Load(d, slopes + v * kVectorLanes);
                const V sum =
                    hn::MulAdd(slope, hn::Min(sums[i][v], zero), hn::Max(sums[i][v], zero));
                float* pixels = job.output.planes[first + v / kVectorsPerPlane].pixels;
                hn::Store(
                    sum, d,
                    pixels + y * pitch + (x + i) * kLanes + v % kVectorsPerPlane * kVectorLanes);
            }
        }
    }
}

template <int kKernel>
void convolveRows(const Job& job, int y) {
    const int planes = static_cast<int>(job.output.planes.size());
    int channels = 0;
    for (const Plane& plane : job.input.planes) channels += plane.channels;
    const std::size_t perPlane = std::size_t{kKernel * kKernel * kLanes} * channels;
    for (int first = 0; first < planes; first += 2) {
        const float* weights = job.weights.weights.data() + first * perPlane;
        if (first + 1 < planes) {
            convolveRow<kKernel, 2>(job, first, weights, y);
        } else {
            convolveRow<kKernel, 1>(job, first, weights, y);
        }
    }
}

void convolveRowOf(const Job& job, int y) {
    switch (job.weights.kernel) {
        case 1:
            return convolveRows<1>(job, y);
        case 3:
            return convolveRows<3>(job, y);
        case 5:
            return convolveRows<5>(job, y);
        default:
            invariantBroken();
    }
}

}  // namespace

void Convolve(const ConvolutionWeights& weights, const PlaneList& input, const PlaneList& output,
              WorkerPool& pool) {
    const Job job{weights, input, output};
    pool.parallelFor(
        static_cast<std::size_t>(output.geometry.size.height),
        [&job](std::size_t y, std::size_t) { convolveRowOf(job, static_cast<int>(y)); });
}

}  // namespace quillmere::neural::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quillmere::neural {

HWY_EXPORT(Convolve);

void convolve(const ConvolutionWeights& weights, const PlaneList& input, const PlaneList& output,
              WorkerPool& pool) {
    HWY_DYNAMIC_DISPATCH(Convolve)(weights, input, output, pool);
}

}  // namespace quillmere::neural
#endif
