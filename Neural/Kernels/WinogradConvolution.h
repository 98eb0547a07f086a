// 3x3 convolutions with 36 products for 16 outputs instead of 144; 5x5 ones with 144 instead of
// 400.
#pragma once

#include <span>

#include "Neural/Kernels/Convolution.h"

namespace quillmere::neural {

/// Sets `to.weights` and `to.liveSpots` from [outputs, inputs, kernel, kernel]. Outputs go in
/// blocks of two groups, the last may be one. The order: for each block, for each spot of the
/// transformed kernel, for each lane of the input's planes (taken as whole pairs, with 0 for what
/// isn't there), the weights of the block's outputs.
void arrangeWinograd(std::span<const float> weights, ConvolutionWeights& to);

void convolveWinograd(const ConvolutionCall& call, KernelScratch& scratch, WorkerPool& pool);

}  // namespace quillmere::neural
