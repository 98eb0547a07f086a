// What the importers of published weights have in common: from layers to operations.
#pragma once

#include <filesystem>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "Base/Error.h"
#include "Neural/Model/Graph.h"
#include "Neural/Model/Half.h"

namespace quillmere::neural {

/// A graph together with its weights, ready for `writeModel`.
struct ModelContents {
    Graph graph;
    std::vector<std::vector<Half>> tensors;  // goes with graph.tensors
};

/// What is wrong with published weights. Thrown inside this folder only: the importers' own
/// functions turn it into an `Error`.
struct ImportFailure {
    std::string sentence;
};

/// Collects layers into a graph, in the order in which they can run.
///
/// Published networks write an activation, or a multiplication of a residual, as a layer of its
/// own. Here an activation is folded into the convolution before it, and a multiplication waits
/// until it can become the factor of a sum. Every method throws `ImportFailure` where a layer
/// can't be expressed.
class GraphBuilder {
public:
    GraphBuilder(const std::string& inputName, int inputChannels, int range);

    int channelsOf(const std::string& value) const;

    /// `weights` is [outputs, inputs, kernel, kernel]. The bias has one value for each output.
    void convolution(const std::string& name, const std::string& input, int kernel,
                     std::vector<Half> weights, std::span<const float> bias);
    /// The input must be a convolution that nothing else reads, and that has no activation yet.
    void activation(const std::string& name, const std::string& input, Activation kind,
                    float slope = 0, std::span<const float> slopes = {});
    void concatenation(const std::string& name, std::span<const std::string> inputs);
    void weightedSum(const std::string& name, std::span<const std::string> inputs,
                     std::span<const float> factors);
    void multiplication(const std::string& name, const std::string& input, float factor);
    void depthToSpace(const std::string& name, const std::string& input, int factor,
                      DepthOrder order);
    void nearestEnlargement(const std::string& name, const std::string& input, int factor);
    /// Another name for the same value, which is then read in several places.
    void alias(const std::string& name, const std::string& input);

    /// Ends the building: checks the whole and hands it over.
    ModelContents finish(const std::string& output, Provenance provenance);

private:
    // A name stands for a value times a factor.
    struct Operand {
        ValueId value = 0;
        float factor = 1;
    };
    struct Use {
        bool read = false;     // an operation has it as an input
        bool several = false;  // it has several names
    };

    Operand find(const std::string& name) const;
    ValueId read(const std::string& name);
    void define(const std::string& name, Operand operand);
    void append(const std::string& name, Operation operation, int channels);
    TensorId addTensor(std::vector<int> shape, std::vector<Half> values);

    ModelContents contents_;
    std::unordered_map<std::string, Operand> names_;
    std::vector<int> channels_;  // by ValueId
    std::vector<Use> uses_;      // by ValueId
};

/// To half precision; what is too large for it becomes infinity, which no tensor may hold.
std::vector<Half> halves(std::span<const float> values);

/// What a caller outside sees of a failure in `file`.
Error importError(const std::filesystem::path& file, const ImportFailure& failure);

}  // namespace quillmere::neural
