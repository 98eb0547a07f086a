// Where the results of a convolution go, as plain pointers for the kernels.
#pragma once

#include <cstddef>
#include <vector>

#include "Neural/Kernels/Convolution.h"

namespace quillmere::neural {

/// Two planes by their pixel (0, 0). Where there is no second plane it is the first again: kernels
/// write the second plane's values before the first's, and so need not ask.
struct PlanePair {
    float* first = nullptr;
    float* second = nullptr;
};

/// The places of `kGroupOutputs` outputs.
struct OutputGroup {
    struct Added {
        PlanePair from;
        float factor = 1;
    };

    PlanePair to;
    std::vector<Added> addends;
    const float* bias = nullptr;    // kGroupOutputs of them
    const float* slopes = nullptr;  // likewise
};

/// The groups of a call's outputs. The result for the input's pixel (x, y) lies
/// y * rowStride + x * pixelStride floats behind a plane's pointer, and so do the addends.
struct ConvolutionOutput {
    std::vector<OutputGroup> groups;
    std::ptrdiff_t rowStride = 0;
    std::ptrdiff_t pixelStride = 0;

    static ConvolutionOutput of(const ConvolutionCall& call);
};

}  // namespace quillmere::neural
