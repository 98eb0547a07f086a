// A model's weights as the kernels want them.
#pragma once

#include <cstddef>
#include <vector>

#include "Base/WorkerPool.h"
#include "Neural/Kernels/Convolution.h"
#include "Neural/Model/CompiledModel.h"
#include "Neural/Runtime/ExecutionPlan.h"

namespace quillmere::neural {

/// Single precision, arranged for the layout that the plan gives each convolution's input.
/// Independent of the model once made; about twice the size of the compiled weights.
class PreparedWeights {
public:
    static PreparedWeights of(const CompiledModel& model, const ExecutionPlan& plan,
                              WorkerPool& pool);

    /// `operation` must be the index of a convolution.
    const ConvolutionWeights& of(std::size_t operation) const { return byOperation_[operation]; }

private:
    std::vector<ConvolutionWeights> byOperation_;  // empty ones where there is no convolution
};

}  // namespace quillmere::neural
