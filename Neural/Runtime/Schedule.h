// A graph as the steps that the runtime takes: what can be done in one pass over memory is one.
#pragma once

#include <cstddef>
#include <variant>
#include <vector>

#include "Neural/Model/Graph.h"

namespace quillmere::neural {

/// A convolution together with what was around it in the graph:
///
///   output = activation(scale * (convolution of input enlarged by `enlargement` + bias))
///            + sum of factor * addend
///
/// An enlargement, by nearest neighbour, is folded into the weights, so that the enlarged image is
/// never there; see `foldEnlargement`.
struct FusedConvolution {
    struct Addend {
        ValueId value = 0;
        float factor = 1;
    };

    Convolution convolution;  // its `input` is the value before the enlargement
    int enlargement = 1;
    float scale = 1;  // above 0, so that it may be multiplied into weights and bias
    std::vector<Addend> addends;
};

/// What is computed for one value.
struct Step {
    using Work = std::variant<FusedConvolution, WeightedSum, DepthToSpace, NearestEnlargement>;

    Work work;
    ValueId output = 0;

    std::vector<ValueId> inputs() const;
};

/// What rows of an input a step needs for rows of its output: for output rows [first, end) the
/// input's [floor(first / divisor) - reach, ceil(end / divisor) + reach).
struct RowNeed {
    ValueId value = 0;
    int divisor = 1;
    int reach = 0;
};

/// The steps of a graph in an order in which they can run. A concatenation is no step: its value is
/// the planes of its inputs.
///
/// Done to the graph: a weighted sum is taken into the convolution that made one of its inputs for
/// it alone, and a nearest enlargement into the 3x3 convolution that reads it. Steps whose value
/// nobody reads are dropped.
struct Schedule {
    std::vector<ValueShape> shapes;  // by ValueId: the graph's, then values of ours
    std::vector<std::vector<ValueId>> concatenations;  // by ValueId; empty for any other value
    std::vector<Step> steps;
    ValueId output = 0;

    static Schedule of(const Graph& graph, const std::vector<ValueShape>& shapes);

    std::vector<RowNeed> rowNeeds(const Step& step) const;
    /// A step makes rows from multiples of this up to such multiples, or to the last row.
    int rowUnit(const Step& step) const;
};

}  // namespace quillmere::neural
