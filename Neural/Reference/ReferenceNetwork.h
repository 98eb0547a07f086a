// The slow, obvious twin of the runtime, for tests to compare with.
#pragma once

#include "Base/Result.h"
#include "Neural/Model/CompiledModel.h"
#include "Neural/Model/PlanarImage.h"

namespace quillmere::neural {

/// Evaluates a model one operation after another on plain planar floats, one thread, each sum in
/// double precision. The input has the graph's channels and is in its range. Errors as
/// `Network::evaluate`.
Result<PlanarImage> evaluateReference(const CompiledModel& model, const PlanarImage& input);

}  // namespace quillmere::neural
