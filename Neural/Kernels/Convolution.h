// Convolutions, where nearly all of a network's time goes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "Base/WorkerPool.h"
#include "Neural/Kernels/AlignedFloats.h"
#include "Neural/Kernels/KernelScratch.h"
#include "Neural/Kernels/Plane.h"

namespace quillmere::neural {

/// Outputs that kernels compute together: two planes.
inline constexpr int kGroupOutputs = 2 * kLanes;

/// How a convolution is computed: `winograd` for 3x3 and 5x5 kernels with enough channels on both
/// sides, `narrow` for a handful of outputs, `direct` for the rest.
enum class ConvolutionAlgorithm { direct, narrow, winograd };

/// The weights of one convolution in the order in which its kernel reads them. The arrangement is
/// made for one layout of the input's planes. The kernels' files say what their order is.
///
/// Every activation is max(x, 0) + slope * min(x, 0): slope 1 is none, 0 is ReLU.
struct ConvolutionWeights {
    ConvolutionAlgorithm algorithm = ConvolutionAlgorithm::direct;
    int kernel = 0;  // 1, 3 or 5
    int outputs = 0;
    std::vector<int> inputChannels;  // of each plane
    AlignedFloats weights;
    AlignedFloats bias;    // padded with 0 to whole groups
    AlignedFloats slopes;  // padded likewise
    // winograd: for each block of outputs, bit `spot` is set where the transformed weights of
    // that spot aren't all zero.
    std::vector<std::uint64_t> liveSpots;

    /// `weights` is [outputs, inputs, kernel, kernel]; `bias` and `slopes` have one for an output.
    static ConvolutionWeights arrange(int kernel, std::span<const int> inputChannels,
                                      std::span<const float> weights, std::span<const float> bias,
                                      std::span<const float> slopes);

    std::size_t bytes() const {
        return (weights.size() + bias.size() + slopes.size()) * sizeof(float);
    }
};

/// The weights, [outputs * factor^2, inputs, 3, 3], of the 3x3 convolution of a small image that
/// equals a nearest enlargement by `factor` followed by the 3x3 convolution `weights`. Its outputs
/// are all outputs of the upper left pixel of each factor x factor square, then those of the pixel
/// to its right, and so on: the order `phaseFirst` of a depth-to-space.
std::vector<float> foldEnlargement(int factor, std::size_t outputs, std::span<const float> weights);

/// How many pixels around a plane a kernel may read; not all of them count.
constexpr int reachOf(int kernel) { return kernel == 5 ? 3 : kernel / 2; }

/// Planes that are added to a result, `factor` times.
struct Addend {
    PlaneList planes;
    float factor = 1;
};

/// Rows [first, end).
struct RowRange {
    int first = 0;
    int end = 0;
};

/// One convolution to compute: output = activation(convolution + bias) + sum of the addends.
///
/// Input and output have one size, share no plane, and the halo is at least `reachOf(kernel)`. With
/// a `shuffle` other than 1 the output has `shuffle` times the input's size, and takes the results
/// by depth to space in the order `phaseFirst`; it then has only full planes. Addends have the
/// output's size and as many planes.
struct ConvolutionCall {
    const ConvolutionWeights& weights;
    PlaneList input;
    PlaneList output;
    std::vector<Addend> addends;
    int shuffle = 1;
    RowRange rows;  // of the input's size; `first` is a multiple of kTileSide
};

/// Blocks until the rows are written; works on the pool. `scratch` belongs to this thread's run.
void convolve(const ConvolutionCall& call, KernelScratch& scratch, WorkerPool& pool);

}  // namespace quillmere::neural
