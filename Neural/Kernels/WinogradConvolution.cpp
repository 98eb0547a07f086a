#include "Neural/Kernels/WinogradConvolution.h"

#include <algorithm>
#include <array>

#include "Neural/Kernels/ConvolutionOutput.h"
#include "Neural/Kernels/WinogradLayout.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Neural/Kernels/WinogradConvolution.cpp"
#include <hwy/foreach_target.h>
// Above must come first: it compiles what follows once for each target.
#include <hwy/highway.h>

#include "Neural/Kernels/PlanePair-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quillmere::neural::HWY_NAMESPACE {
namespace {

// The matrix kernel's block of sums, kMatrixTiles by kMatrixVectors vectors, leaves registers for
// the weights and one broadcast: of 16 registers, or of 32 with AVX-512 and NEON.
constexpr int kMatrixVectors = HWY_ARCH_ARM ? 4 : 2;
constexpr int kMatrixTiles = HWY_ARCH_X86 && HWY_TARGET <= HWY_AVX3 ? 12 : 6;
constexpr int kMatrixOutputs = kMatrixVectors * kVectorLanes;

constexpr float kRoot2 = 1.41421356237309505f;

// The values at the six points of the polynomial whose coefficients are six neighbours, by the
// transposed interpolation. See kWinogradFinitePoints.
HWY_INLINE void transformSix(const V* in, V* out) {
    const D d;
    const V fiveHalves = hn::Set(d, 2.5f);
    const V even1 = hn::NegMulAdd(hn::Set(d, 2.0f), in[2], in[4]);
    const V even2 = hn::NegMulAdd(hn::Set(d, 0.5f), in[2], in[4]);
    const V odd1 = hn::NegMulAdd(hn::Set(d, kRoot2), in[1], hn::Mul(hn::Set(d, kRoot2 / 2), in[3]));
    const V odd2 = hn::NegMulAdd(hn::Set(d, kRoot2 / 2), in[1], hn::Mul(hn::Set(d, kRoot2), in[3]));
    out[0] = hn::NegMulAdd(fiveHalves, in[2], hn::Add(in[0], in[4]));
    out[1] = hn::Add(even1, odd1);
    out[2] = hn::Sub(even1, odd1);
    out[3] = hn::Add(even2, odd2);
    out[4] = hn::Sub(even2, odd2);
    out[5] = hn::NegMulAdd(fiveHalves, in[3], hn::Add(in[1], in[5]));
}

// From six products to four neighbouring outputs.
HWY_INLINE void transformBack(const V* in, V* out) {
    const D d;
    const V sum1 = hn::Add(in[1], in[2]), difference1 = hn::Sub(in[1], in[2]);
    const V sum2 = hn::Add(in[3], in[4]), difference2 = hn::Sub(in[3], in[4]);
    out[0] = hn::Add(hn::Add(in[0], sum1), sum2);
    out[1] =
        hn::MulAdd(hn::Set(d, kRoot2), difference2, hn::Mul(hn::Set(d, kRoot2 / 2), difference1));
    out[2] = hn::MulAdd(hn::Set(d, 2.0f), sum2, hn::Mul(hn::Set(d, 0.5f), sum1));
    out[3] = hn::MulAdd(hn::Set(d, 2 * kRoot2), difference2,
                        hn::MulAdd(hn::Set(d, kRoot2 / 4), difference1, in[5]));
}

// The transformed input of tiles [first, first + count).
void transformInput(const ConvolutionCall& call, const WinogradLayout& layout, std::size_t first,
                    std::size_t count, float* HWY_RESTRICT transformed) {
    const D d;
    const auto pitch = static_cast<std::ptrdiff_t>(call.input.geometry.pitch);
    const std::vector<Plane>& planes = layout.planes;
    for (std::size_t group = 0; group < layout.inputGroups; ++group) {
        // The weights of a plane that isn't there are 0.
        const PlanePair pair{planes[2 * group].pixels,
                             planes[std::min(2 * group + 1, planes.size() - 1)].pixels};
        for (std::size_t n = 0; n < count; ++n) {
            const std::size_t tile = first + n;
            float* to = transformed + layout.inputCell(n / kPanelTiles, group, 0) +
                        n % kPanelTiles * kGroupOutputs;
            const std::ptrdiff_t y =
                call.rows.first + tile / layout.tilesWide * kWinogradTile - std::ptrdiff_t{1};
            const std::ptrdiff_t x = tile % layout.tilesWide * kWinogradTile - std::ptrdiff_t{1};
            const std::ptrdiff_t corner = y * pitch + x * kLanes;
            QUILLMERE_UNROLL
            for (int v = 0; v < kVectorsPerGroup; ++v) {
                V columns[kWinogradPoints][kWinogradPoints];
                QUILLMERE_UNROLL
                for (int i = 0; i < kWinogradPoints; ++i) {
                    V in[kWinogradPoints], out[kWinogradPoints];
                    QUILLMERE_UNROLL
                    for (int j = 0; j < kWinogradPoints; ++j) {
                        in[j] = loadPair(pair, v, corner + j * pitch + i * kLanes);
                    }
                    transformSix(in, out);
                    QUILLMERE_UNROLL
                    for (int j = 0; j < kWinogradPoints; ++j) columns[j][i] = out[j];
                }
                QUILLMERE_UNROLL
                for (int j = 0; j < kWinogradPoints; ++j) {
                    V out[kWinogradPoints];
                    transformSix(columns[j], out);
                    QUILLMERE_UNROLL
                    for (int i = 0; i < kWinogradPoints; ++i) {
                        hn::Store(out[i], d,
                                  to + (j * kWinogradPoints + i) * kCellFloats + v * kVectorLanes);
                    }
                }
            }
        }
    }
}

// kVectors of a block's outputs for kMatrixTiles tiles of one panel at one spot.
template <int kVectors>
HWY_NOINLINE void multiply(const float* HWY_RESTRICT tiles, std::size_t inputGroups,
                           const float* HWY_RESTRICT weights, std::size_t blockOutputs,
                           float* HWY_RESTRICT products, std::size_t productGroupFloats) {
    const D d;
    V sums[kMatrixTiles][kVectors];
    QUILLMERE_UNROLL
    for (int i = 0; i < kMatrixTiles; ++i) {
        QUILLMERE_UNROLL
        for (int v = 0; v < kVectors; ++v) sums[i][v] = hn::Zero(d);
    }
    for (std::size_t group = 0; group < inputGroups; ++group) {
        QUILLMERE_UNROLL
        for (int lane = 0; lane < kGroupOutputs; ++lane) {
            V w[kVectors];
            QUILLMERE_UNROLL
            for (int v = 0; v < kVectors; ++v) {
                w[v] = keepInRegister(hn::Load(d, weights + v * kVectorLanes));
            }
            QUILLMERE_UNROLL
            for (int i = 0; i < kMatrixTiles; ++i) {
                const V value = hn::Set(d, tiles[i * kGroupOutputs + lane]);
                QUILLMERE_UNROLL
                for (int v = 0; v < kVectors; ++v) {
                    sums[i][v] = hn::MulAdd(value, w[v], sums[i][v]);
                }
            }
            weights += blockOutputs;
        }
        tiles += kWinogradSpots * kCellFloats;
    }
    QUILLMERE_UNROLL
    for (int i = 0; i < kMatrixTiles; ++i) {
        QUILLMERE_UNROLL
        for (int v = 0; v < kVectors; ++v) {
            const int output = v * kVectorLanes;
            hn::Store(sums[i][v], d,
                      products + output / kGroupOutputs * productGroupFloats + i * kGroupOutputs +
                          output % kGroupOutputs);
        }
    }
}

// All products of a spot for the first `panels` panels.
void multiplySpot(const float* transformed, const WinogradLayout& layout, std::size_t panels,
                  std::size_t spot, const float* weights, std::size_t blockOutputs,
                  float* products) {
    const std::size_t groupFloats = layout.productCell(1, 0, 0);
    for (std::size_t panel = 0; panel < panels; ++panel) {
        for (std::size_t tile = 0; tile < kPanelTiles; tile += kMatrixTiles) {
            const float* from =
                transformed + layout.inputCell(panel, 0, spot) + tile * kGroupOutputs;
            float* to = products + layout.productCell(0, panel, spot) + tile * kGroupOutputs;
            std::size_t output = 0;
            for (; output + kMatrixOutputs <= blockOutputs; output += kMatrixOutputs) {
                multiply<kMatrixVectors>(
                    from, layout.inputGroups, weights + output, blockOutputs,
                    to + output / kGroupOutputs * groupFloats + output % kGroupOutputs,
                    groupFloats);
            }
            if (output < blockOutputs) {
                multiply<1>(from, layout.inputGroups, weights + output, blockOutputs, to,
                            groupFloats);
            }
        }
    }
}

void clearSpot(const WinogradLayout& layout, std::size_t panels, std::size_t spot,
               std::size_t groups, float* products) {
    for (std::size_t group = 0; group < groups; ++group) {
        for (std::size_t panel = 0; panel < panels; ++panel) {
            std::fill_n(products + layout.productCell(group, panel, spot), kCellFloats, 0.0f);
        }
    }
}

// From a tile's products to as many of its outputs as there are. `corner` is the offset of the
// first one.
template <class Fits>
HWY_INLINE void transformTile(const float* HWY_RESTRICT products, const Finish& finish,
                              std::ptrdiff_t corner, std::ptrdiff_t rowStride,
                              std::ptrdiff_t pixelStride, const Fits& fits) {
    const D d;
    V half[kWinogradTile][kWinogradPoints];
    QUILLMERE_UNROLL
    for (int i = 0; i < kWinogradPoints; ++i) {
        V in[kWinogradPoints], out[kWinogradTile];
        QUILLMERE_UNROLL
        for (int j = 0; j < kWinogradPoints; ++j) {
            in[j] = hn::Load(d, products + (j * kWinogradPoints + i) * kCellFloats);
        }
        transformBack(in, out);
        QUILLMERE_UNROLL
        for (int j = 0; j < kWinogradTile; ++j) half[j][i] = out[j];
    }
    QUILLMERE_UNROLL
    for (int j = 0; j < kWinogradTile; ++j) {
        V out[kWinogradTile];
        transformBack(half[j], out);
        QUILLMERE_UNROLL
        for (int i = 0; i < kWinogradTile; ++i) {
            if (fits(i, j)) finish(out[i], corner + j * rowStride + i * pixelStride);
        }
    }
}

// From the products of a group to its outputs.
void transformOutput(const ConvolutionCall& call, const ConvolutionOutput& output,
                     const OutputGroup& group, const WinogradLayout& layout, std::size_t first,
                     std::size_t count, const float* products) {
    const std::ptrdiff_t rowStride = output.rowStride, pixelStride = output.pixelStride;
    for (int v = kVectorsPerGroup - 1; v >= 0; --v) {
        const Finish finish(group, v);
        for (std::size_t n = 0; n < count; ++n) {
            const std::size_t tile = first + n;
            const std::ptrdiff_t y = call.rows.first + tile / layout.tilesWide * kWinogradTile;
            const std::ptrdiff_t x = tile % layout.tilesWide * kWinogradTile;
            const std::ptrdiff_t corner = y * rowStride + x * pixelStride;
            const std::ptrdiff_t rows = call.rows.end - y;
            const std::ptrdiff_t columns = call.input.geometry.size.width - x;
            const float* from = products + layout.productCell(0, n / kPanelTiles, 0) +
                                n % kPanelTiles * kGroupOutputs + v * kVectorLanes;
            if (rows >= kWinogradTile && columns >= kWinogradTile) {
                transformTile(from, finish, corner, rowStride, pixelStride,
                              [](int, int) { return true; });
            } else {
                transformTile(from, finish, corner, rowStride, pixelStride,
                              [&](int i, int j) { return i < columns && j < rows; });
            }
        }
    }
}

void WinogradBlock(const ConvolutionCall& call, const ConvolutionOutput& output,
                   const WinogradLayout& layout, std::size_t block, float* scratch) {
    const std::size_t first = block * layout.tilesInBlock();
    const std::size_t count = std::min(layout.tilesInBlock(), layout.tiles - first);
    const std::size_t panels = (count + kPanelTiles - 1) / kPanelTiles;
    float* transformed = scratch;
    float* products = scratch + layout.inputFloats();
    transformInput(call, layout, first, count, transformed);

    const float* weights = call.weights.weights.data();
    for (std::size_t n = 0; n < call.weights.liveSpots.size(); ++n) {
        const std::size_t groups = std::min<std::size_t>(2, output.groups.size() - 2 * n);
        const std::size_t blockOutputs = groups * kGroupOutputs;
        for (std::size_t spot = 0; spot < kWinogradSpots; ++spot) {
            if ((call.weights.liveSpots[n] >> spot & 1) != 0) {
                multiplySpot(transformed, layout, panels, spot, weights, blockOutputs, products);
            } else {
                clearSpot(layout, panels, spot, groups, products);
            }
            weights += layout.inputGroups * kGroupOutputs * blockOutputs;
        }
        for (std::size_t group = 0; group < groups; ++group) {
            transformOutput(call, output, output.groups[2 * n + group], layout, first, count,
                            products + layout.productCell(group, 0, 0));
        }
    }
}

}  // namespace
}  // namespace quillmere::neural::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quillmere::neural {

HWY_EXPORT(WinogradBlock);

namespace {

// Transformed input of a block, in panels of one group: few enough for it to stay near the
// processor while all the weights pass by, enough for them not to pass by too often.
constexpr std::size_t kBlockPanelGroups = 8;

constexpr std::size_t kTaps = 9;

// A 5x5 kernel is four of 3x3, side by side and with 0 beyond the fifth row and column, that read
// four copies of the input, each moved by 3: 36 products instead of 100 for each four outputs.
constexpr std::size_t kParts5x5 = 4;

// [outputs, inputs, 5, 5] to [outputs, part, inputs, 3, 3].
std::vector<float> splitKernels(std::size_t outputs, std::span<const float> weights) {
    const std::size_t inputs = weights.size() / outputs / 25;
    std::vector<float> parts(outputs * kParts5x5 * inputs * kTaps);
    for (std::size_t out = 0; out < outputs; ++out) {
        for (std::size_t in = 0; in < inputs; ++in) {
            for (std::size_t tap = 0; tap < 25; ++tap) {
                const std::size_t y = tap / 5, x = tap % 5;
                const std::size_t part = y / 3 * 2 + x / 3;
                parts[((out * kParts5x5 + part) * inputs + in) * kTaps + y % 3 * 3 + x % 3] =
                    weights[(out * inputs + in) * 25 + tap];
            }
        }
    }
    return parts;
}

// What the kernels' parts read. The first part's middle is one pixel up and left of the kernel's.
std::vector<Plane> readPlanes(const ConvolutionCall& call) {
    if (call.weights.kernel == 3) return call.input.planes;
    const auto pitch = static_cast<std::ptrdiff_t>(call.input.geometry.pitch);
    std::vector<Plane> planes;
    for (const std::ptrdiff_t dy : {-1, 2}) {
        for (const std::ptrdiff_t dx : {-1, 2}) {
            for (const Plane& plane : call.input.planes) {
                planes.push_back({plane.pixels + dy * pitch + dx * kLanes, plane.channels});
            }
        }
    }
    return planes;
}

}  // namespace

WinogradLayout WinogradLayout::of(const ConvolutionCall& call) {
    const auto tiles = [](int side) {
        return static_cast<std::size_t>(side + kWinogradTile - 1) / kWinogradTile;
    };
    WinogradLayout layout;
    layout.tilesWide = tiles(call.input.geometry.size.width);
    layout.tiles = layout.tilesWide * tiles(call.rows.end - call.rows.first);
    layout.planes = readPlanes(call);
    layout.inputGroups = groupsOf(layout.planes.size());
    layout.panelsInBlock = std::max<std::size_t>(1, kBlockPanelGroups / layout.inputGroups);
    return layout;
}

void arrangeWinograd(std::span<const float> weights, ConvolutionWeights& to) {
    std::vector<int> channels = to.inputChannels;
    std::vector<float> parts;
    if (to.kernel == 5) {
        parts = splitKernels(to.outputs, weights);
        weights = parts;
        for (std::size_t part = 1; part < kParts5x5; ++part) {
            channels.insert(channels.end(), to.inputChannels.begin(), to.inputChannels.end());
        }
    }
    const std::size_t outputs = to.outputs;
    const std::size_t inputs = weights.size() / outputs / kTaps;
    const std::size_t lanes = groupsOf(channels.size()) * kGroupOutputs;
    const std::size_t paddedOutputs = to.bias.size();
    to.weights.assign(kWinogradSpots * lanes * paddedOutputs, 0.0f);
    to.liveSpots.assign((paddedOutputs + kBlockOutputs - 1) / kBlockOutputs, 0);
    std::array<std::array<double, kBlockOutputs>, kTaps> taps{};
    std::array<std::array<double, kBlockOutputs>, kWinogradSpots> spots;
    for (std::size_t block = 0; block < to.liveSpots.size(); ++block) {
        const std::size_t begin = block * kBlockOutputs;
        const std::size_t blockOutputs = std::min(kBlockOutputs, paddedOutputs - begin);
        const std::size_t count = std::min(blockOutputs, outputs - begin);
        for (auto& tap : taps) tap.fill(0);
        float* blockWeights = to.weights.data() + kWinogradSpots * lanes * begin;
        std::size_t in = 0;
        for (std::size_t plane = 0; plane < channels.size(); ++plane) {
            for (int channel = 0; channel < channels[plane]; ++channel, ++in) {
                for (std::size_t n = 0; n < count; ++n) {
                    const float* kernel = &weights[((begin + n) * inputs + in) * kTaps];
                    for (std::size_t tap = 0; tap < kTaps; ++tap) taps[tap][n] = kernel[tap];
                }
                transformKernels(taps, spots);
                const std::size_t lane = plane * kLanes + channel;
                for (std::size_t spot = 0; spot < kWinogradSpots; ++spot) {
                    std::copy_n(spots[spot].begin(), blockOutputs,
                                blockWeights + (spot * lanes + lane) * blockOutputs);
                    const bool live = std::any_of(spots[spot].begin(), spots[spot].end(),
                                                  [](double value) { return value != 0; });
                    if (live) to.liveSpots[block] |= std::uint64_t{1} << spot;
                }
            }
        }
    }
}

void convolveWinograd(const ConvolutionCall& call, KernelScratch& scratch, WorkerPool& pool) {
    const WinogradLayout layout = WinogradLayout::of(call);
    const ConvolutionOutput output = ConvolutionOutput::of(call);
    scratch.reserve(layout.scratchFloats());
    pool.parallelFor(layout.blocks(), [&](std::size_t block, std::size_t worker) {
        HWY_DYNAMIC_DISPATCH(WinogradBlock)(call, output, layout, block, scratch.of(worker));
    });
}

}  // namespace quillmere::neural
#endif
