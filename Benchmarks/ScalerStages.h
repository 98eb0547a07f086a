// The parts of the frame scaler, each alone on one thread.
#pragma once

#include "Benchmarks/PlanarBuffer.h"

namespace quillmere::benchmark {

/// Prints the time of each stage on `frame` with `before` as the one before, both of `size`.
void measureScalerStages(const PlanarBuffer& before, const PlanarBuffer& frame, PixelSize size);

}  // namespace quillmere::benchmark
