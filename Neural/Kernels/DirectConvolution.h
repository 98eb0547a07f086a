// The convolution as its definition says it: for few channels, and for kernels that aren't 3x3.
#pragma once

#include <span>

#include "Neural/Kernels/Convolution.h"

namespace quillmere::neural {

/// Sets `to.weights` from [outputs, inputs, kernel, kernel]. The order: for each group of outputs,
/// for each plane of the input, for each row and column of the kernel, for each channel of the
/// plane, the weights of the group's outputs.
void arrangeDirect(std::span<const float> weights, ConvolutionWeights& to);

void convolveDirect(const ConvolutionCall& call, WorkerPool& pool);

}  // namespace quillmere::neural
