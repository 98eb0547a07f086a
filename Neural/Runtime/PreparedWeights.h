// A model's weights as the kernels want them.
#pragma once

#include <cstddef>
#include <vector>

#include "Base/Result.h"
#include "Base/WorkerPool.h"
#include "Neural/Kernels/Convolution.h"
#include "Neural/Model/CompiledModel.h"
#include "Neural/Runtime/ExecutionPlan.h"
#include "Neural/Runtime/WeightsTable.h"

namespace quillmere::neural {

/// Single precision, arranged for the layout that the plan gives each convolution's input.
/// Independent of the model once made; up to eight times the size of the compiled weights.
class PreparedWeights {
public:
    /// Takes what `table` knows, prepares the rest on the pool and adds it there. Fails where a
    /// tensor is not what its checksum says: under that checksum, other networks would get it too.
    /// Throws std::bad_alloc.
    static Result<PreparedWeights> of(const CompiledModel& model, const Schedule& schedule,
                                      const ExecutionPlan& plan, WorkerPool& pool,
                                      WeightsTable& table);

    /// `step` must be the index of a convolution.
    const ConvolutionWeights& of(std::size_t step) const { return *byStep_[step]; }

private:
    std::vector<WeightsTable::SharedWeights> byStep_;  // null where there is no convolution
};

}  // namespace quillmere::neural
