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
/// Independent of the model once made; up to eight times the size of the compiled weights.
class PreparedWeights {
public:
    static PreparedWeights of(const CompiledModel& model, const Schedule& schedule,
                              const ExecutionPlan& plan, WorkerPool& pool);

    /// `step` must be the index of a convolution.
    const ConvolutionWeights& of(std::size_t step) const { return byStep_[step]; }

private:
    std::vector<ConvolutionWeights> byStep_;  // empty ones where there is no convolution
};

}  // namespace quillmere::neural
