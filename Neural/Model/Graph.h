// A network as data: what the importers write, the compiled model stores and the runtime plans.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "Base/Result.h"

namespace quillmere::neural {

/// An index into `Graph::values`: 0 is the input, n + 1 what operation n yields.
using ValueId = std::size_t;
/// An index into `Graph::tensors`.
using TensorId = std::size_t;

enum class Activation { none, relu, leakyRelu, prelu };

/// How depth-to-space takes the channels apart, for output channel c at phase (dx, dy):
/// `channelFirst` ("CRD") reads input channel (c * factor + dy) * factor + dx,
/// `phaseFirst` ("DCR") reads (dy * factor + dx) * channels + c.
enum class DepthOrder { channelFirst, phaseFirst };

/// Cross-correlation of stride 1 with k x k kernels, zero padding to the same size.
struct Convolution {
    ValueId input = 0;
    int outputs = 0;
    int kernel = 0;        // 1, 3 or 5
    TensorId weights = 0;  // [outputs, inputs, k, k]
    TensorId bias = 0;     // [outputs]
    Activation activation = Activation::none;
    float slope = 0;      // leakyRelu: factor of what is below zero
    TensorId slopes = 0;  // prelu: [outputs]

    friend bool operator==(const Convolution&, const Convolution&) = default;
};

/// The channels of the inputs, one after the other.
struct Concatenation {
    std::vector<ValueId> inputs;

    friend bool operator==(const Concatenation&, const Concatenation&) = default;
};

/// sum of factors[i] * inputs[i]; all inputs have the same channels.
struct WeightedSum {
    std::vector<ValueId> inputs;
    std::vector<float> factors;

    friend bool operator==(const WeightedSum&, const WeightedSum&) = default;
};

/// Every factor^2 channels become one of factor times the width and height.
struct DepthToSpace {
    ValueId input = 0;
    int factor = 0;
    DepthOrder order = DepthOrder::channelFirst;

    friend bool operator==(const DepthToSpace&, const DepthToSpace&) = default;
};

/// Every pixel becomes factor x factor equal ones.
struct NearestEnlargement {
    ValueId input = 0;
    int factor = 0;

    friend bool operator==(const NearestEnlargement&, const NearestEnlargement&) = default;
};

using Operation =
    std::variant<Convolution, Concatenation, WeightedSum, DepthToSpace, NearestEnlargement>;

/// The values that an operation reads.
std::vector<ValueId> inputsOf(const Operation& operation);

/// Where a tensor lies in the weights: half precision, row-major.
struct TensorInfo {
    std::uint64_t offset = 0;  // in bytes, a multiple of kTensorAlignment
    std::vector<int> shape;    // of rank 1 or 4
    std::string sha256;  // of the bytes, so that equal tensors of several networks can be shared

    std::uint64_t elements() const;
    friend bool operator==(const TensorInfo&, const TensorInfo&) = default;
};

/// A file of the published weights.
struct SourceFile {
    std::string path;  // inside the package
    std::string sha256;

    friend bool operator==(const SourceFile&, const SourceFile&) = default;
};

/// Where published weights come from.
struct Provenance {
    std::string package;
    std::string version;
    std::string integrity;  // of the package's archive, as its registry states it
    std::string licence;    // SPDX, of the weights
    std::vector<SourceFile> files;

    friend bool operator==(const Provenance&, const Provenance&) = default;
};

/// What is known of a value before any image is: its channels, and its width and height in
/// multiples of the input's.
struct ValueShape {
    int channels = 0;
    int scale = 1;

    friend bool operator==(const ValueShape&, const ValueShape&) = default;
};

/// One input, operations in an order in which they can run, the last value or an earlier one as
/// the output.
struct Graph {
    std::vector<std::string> values;  // names, all different; values[0] is the input's
    int inputChannels = 3;
    int range = 1;        // the border's values for black and white are 0 and this: 1 or 255
    std::string licence;  // SPDX, of the weights together
    std::vector<Operation> operations;
    ValueId output = 0;
    std::vector<TensorInfo> tensors;
    std::vector<Provenance> provenance;

    friend bool operator==(const Graph&, const Graph&) = default;
};

inline constexpr std::uint64_t kTensorAlignment = 64;

/// The shape of every value of a graph that keeps all its rules: inputs made before they are
/// read, tensors that exist and have the shape that their operation needs, sane sizes. What this
/// accepts, the runtime can run. Offsets are not looked at.
Result<std::vector<ValueShape>> inferShapes(const Graph& graph);

}  // namespace quillmere::neural
