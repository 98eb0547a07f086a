// Convolutions to a handful of channels, such as a picture's three, where outputs can't fill a
// vector: the channels of the input do.
#pragma once

#include <span>

#include "Neural/Kernels/Convolution.h"

namespace quillmere::neural {

inline constexpr int kMostNarrowOutputs = 4;

/// Sets `to.weights` from [outputs, inputs, kernel, kernel]. The order: for each plane of the
/// input, for each row and column of the kernel, for each output, the weights of the plane's
/// channels, twice (a vector may hold two pixels) and with 0 for spare lanes.
void arrangeNarrow(std::span<const float> weights, ConvolutionWeights& to);

/// Writes the other lanes of the output's plane as well.
void convolveNarrow(const ConvolutionCall& call, WorkerPool& pool);

}  // namespace quillmere::neural
