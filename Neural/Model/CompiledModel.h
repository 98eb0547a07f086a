// A compiled network on disk: the directory <resource>.mlmodelc with graph.json and weights.bin.
#pragma once

#include <filesystem>
#include <span>
#include <vector>

#include "Base/Result.h"
#include "Neural/Model/Graph.h"
#include "Neural/Model/GraphJson.h"
#include "Neural/Model/Half.h"
#include "Neural/Model/MappedFile.h"

namespace quillmere::neural {

/// A compiled model that can be run.
///
/// `open` checks all structure and all sizes, so that nothing in a damaged or hostile directory
/// can lead a reader astray, but it doesn't read the weights: `verify` does. Whoever puts a model
/// in place verifies all of it, whoever uses a tensor may verify that one alone. Weights that
/// nobody verified give a wrong picture at worst, never a crash.
class CompiledModel {
public:
    static Result<CompiledModel> open(const std::filesystem::path& directory);

    const Graph& graph() const { return description_.graph; }
    /// The shapes of `graph().values`.
    const std::vector<ValueShape>& shapes() const { return shapes_; }
    /// Row-major, as long as `graph().tensors[id].elements()`; lives as long as the model.
    std::span<const Half> tensor(TensorId id) const;

    /// Compares graph, weights and every single tensor with their checksums.
    Result<void> verify() const;
    /// Compares one tensor with its checksum.
    Result<void> verify(TensorId id) const;

private:
    CompiledModel() = default;

    MappedFile graphFile_;
    MappedFile weightsFile_;
    ModelDescription description_;
    std::vector<ValueShape> shapes_;
};

/// Writes a model as a whole: the directory either appears complete or stays as it was, whenever
/// the process ends. An existing model in its place is replaced; anything else there is an error.
/// `tensors` goes with `graph.tensors`, whose offsets and checksums are filled in here.
Result<void> writeModel(Graph graph, std::span<const std::vector<Half>> tensors,
                        const std::filesystem::path& directory);

}  // namespace quillmere::neural
