// The operations that move or add pixels: bound by memory.
#pragma once

#include <span>

#include "Base/WorkerPool.h"
#include "Neural/Kernels/Convolution.h"
#include "Neural/Kernels/Plane.h"
#include "Neural/Model/Graph.h"

namespace quillmere::neural {

/// output = sum of factors[i] * inputs[i], channel by channel; the planes may be laid out
/// differently in each input, the output's are full but for the last. `rows` is of the output, as
/// below.
void weightedSum(std::span<const PlaneList> inputs, std::span<const float> factors,
                 const PlaneList& output, RowRange rows, WorkerPool& pool);

/// See `DepthOrder`. The output is `factor` times the input's size.
void depthToSpace(const PlaneList& input, int factor, DepthOrder order, const PlaneList& output,
                  RowRange rows, WorkerPool& pool);

/// The output has the input's planes at `factor` times its size.
void enlargeNearest(const PlaneList& input, int factor, const PlaneList& output, RowRange rows,
                    WorkerPool& pool);

}  // namespace quillmere::neural
