// The direct convolution, where nearly all of a network's time goes.
#pragma once

#include <span>
#include <vector>

#include "Base/WorkerPool.h"
#include "Neural/Kernels/AlignedFloats.h"
#include "Neural/Kernels/Plane.h"

namespace quillmere::neural {

/// The weights of one convolution in the order in which the kernel reads them.
///
/// Outputs go in blocks of two planes (the last may be one): for each block, for each plane of the
/// input, for each row and column of the kernel, for each channel of the plane, the weights of the
/// block's outputs. The arrangement is therefore made for one layout of the input's planes.
///
/// Every activation is max(x, 0) + slope * min(x, 0): slope 1 is none, 0 is ReLU.
struct ConvolutionWeights {
    int kernel = 0;  // 1, 3 or 5
    int outputs = 0;
    std::vector<int> inputChannels;  // of each plane
    AlignedFloats weights;
    AlignedFloats bias;    // padded with 0 to whole planes
    AlignedFloats slopes;  // padded likewise

    /// `weights` is [outputs, inputs, kernel, kernel]; `bias` and `slopes` have one for an output.
    static ConvolutionWeights arrange(int kernel, std::span<const int> inputChannels,
                                      std::span<const float> weights, std::span<const float> bias,
                                      std::span<const float> slopes);
};

/// Input and output have one geometry, whose halo is at least kernel / 2, and share no plane. The
/// output has ceil(outputs / kLanes) planes.
void convolve(const ConvolutionWeights& weights, const PlaneList& input, const PlaneList& output,
              WorkerPool& pool);

}  // namespace quillmere::neural
