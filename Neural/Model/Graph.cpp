#include "Neural/Model/Graph.h"

#include <cmath>
#include <optional>
#include <unordered_set>

#include "Neural/Model/NeuralError.h"

namespace quillmere::neural {
namespace {

// Far above what any network here needs, low enough that no product of them overflows and a
// hostile file can't ask for absurd plans.
constexpr int kMaxChannels = 2048;
constexpr int kMaxScale = 16;
constexpr std::size_t kMaxOperations = 8192;
constexpr int kMaxDimension = 1 << 16;

bool fits(int value, int most) { return value >= 1 && value <= most; }

// Infers one operation's shape, or says what is wrong with it.
class Inference {
public:
    Inference(const Graph& graph, const std::vector<ValueShape>& known)
        : graph_(graph), known_(known) {}

    const char* problem() const { return problem_; }
    ValueShape shape() const { return shape_; }

    void operator()(const Convolution& op) {
        if (op.kernel != 1 && op.kernel != 3 && op.kernel != 5) return fail("an unknown kernel");
        if (!fits(op.outputs, kMaxChannels)) return fail("an absurd number of outputs");
        const ValueShape in = known_[op.input];
        if (!hasShape(op.weights, {op.outputs, in.channels, op.kernel, op.kernel})) {
            return fail("weights of another shape");
        }
        if (!hasShape(op.bias, {op.outputs})) return fail("a bias of another shape");
        if (op.activation == Activation::prelu && !hasShape(op.slopes, {op.outputs})) {
            return fail("slopes of another shape");
        }
        if (!std::isfinite(op.slope)) return fail("a slope that is no number");
        shape_ = {op.outputs, in.scale};
    }

    void operator()(const Concatenation& op) {
        if (op.inputs.empty()) return fail("no inputs");
        shape_ = {0, known_[op.inputs.front()].scale};
        for (const ValueId input : op.inputs) {
            if (known_[input].scale != shape_.scale) return fail("inputs of different sizes");
            shape_.channels += known_[input].channels;
            if (!fits(shape_.channels, kMaxChannels)) return fail("too many channels");
        }
    }

    void operator()(const WeightedSum& op) {
        if (op.inputs.empty()) return fail("no inputs");
        if (op.factors.size() != op.inputs.size()) return fail("a factor too many or too few");
        shape_ = known_[op.inputs.front()];
        for (std::size_t i = 0; i < op.inputs.size(); ++i) {
            if (known_[op.inputs[i]] != shape_) return fail("inputs of different shapes");
            if (!std::isfinite(op.factors[i])) return fail("a factor that is no number");
        }
    }

    void operator()(const DepthToSpace& op) {
        const ValueShape in = known_[op.input];
        if (!enlarge(in, op.factor)) return;
        const int phases = op.factor * op.factor;
        if (in.channels % phases != 0) return fail("channels that its factor doesn't divide");
        shape_.channels = in.channels / phases;
    }

    void operator()(const NearestEnlargement& op) { enlarge(known_[op.input], op.factor); }

private:
    void fail(const char* problem) { problem_ = problem; }

    bool enlarge(ValueShape in, int factor) {
        if (!fits(factor, kMaxScale) || !fits(in.scale * factor, kMaxScale)) {
            fail("an absurd factor");
            return false;
        }
        shape_ = {in.channels, in.scale * factor};
        return true;
    }

    bool hasShape(TensorId id, const std::vector<int>& shape) const {
        return id < graph_.tensors.size() && graph_.tensors[id].shape == shape;
    }

    const Graph& graph_;
    const std::vector<ValueShape>& known_;
    const char* problem_ = nullptr;
    ValueShape shape_;
};

Error malformed(const std::string& what) {
    return makeError(ErrorCode::malformed, "The network " + what + ".");
}

std::optional<Error> checkNames(const Graph& graph) {
    if (graph.values.size() != graph.operations.size() + 1) {
        return malformed("names another number of values than it computes");
    }
    std::unordered_set<std::string_view> seen;
    for (const std::string& name : graph.values) {
        if (name.empty()) return malformed("has a value without a name");
        if (!seen.insert(name).second) return malformed("names two values \"" + name + "\"");
    }
    return std::nullopt;
}

std::optional<Error> checkTensors(const Graph& graph) {
    for (const TensorInfo& tensor : graph.tensors) {
        const std::size_t rank = tensor.shape.size();
        if (rank != 1 && rank != 4) return malformed("has a tensor of an unknown rank");
        for (const int dimension : tensor.shape) {
            if (!fits(dimension, rank == 1 ? kMaxDimension : kMaxChannels)) {
                return malformed("has a tensor of an absurd shape");
            }
        }
    }
    return std::nullopt;
}

}  // namespace

std::vector<ValueId> inputsOf(const Operation& operation) {
    struct Visitor {
        std::vector<ValueId> operator()(const Convolution& op) const { return {op.input}; }
        std::vector<ValueId> operator()(const Concatenation& op) const { return op.inputs; }
        std::vector<ValueId> operator()(const WeightedSum& op) const { return op.inputs; }
        std::vector<ValueId> operator()(const DepthToSpace& op) const { return {op.input}; }
        std::vector<ValueId> operator()(const NearestEnlargement& op) const { return {op.input}; }
    };
    return std::visit(Visitor{}, operation);
}

std::uint64_t TensorInfo::elements() const {
    std::uint64_t product = 1;
    for (const int dimension : shape) product *= static_cast<std::uint64_t>(dimension);
    return product;
}

Result<std::vector<ValueShape>> inferShapes(const Graph& graph) {
    if (graph.range != 1 && graph.range != 255) return malformed("has an unknown range of values");
    if (!fits(graph.inputChannels, kMaxChannels)) return malformed("has an absurd input");
    if (graph.operations.empty()) return malformed("computes nothing");
    if (graph.operations.size() > kMaxOperations) return malformed("is absurdly long");
    if (const auto error = checkNames(graph)) return *error;
    if (const auto error = checkTensors(graph)) return *error;

    std::vector<ValueShape> shapes{{graph.inputChannels, 1}};
    for (const Operation& operation : graph.operations) {
        const std::string& name = graph.values[shapes.size()];
        for (const ValueId input : inputsOf(operation)) {
            if (input >= shapes.size()) {
                return malformed("reads a value for \"" + name + "\" before it is computed");
            }
        }
        Inference inference(graph, shapes);
        std::visit(inference, operation);
        if (inference.problem() != nullptr) {
            return malformed("has " + std::string(inference.problem()) + " at \"" + name + "\"");
        }
        shapes.push_back(inference.shape());
    }
    if (graph.output == 0 || graph.output >= shapes.size()) return malformed("has no output");
    return shapes;
}

}  // namespace quillmere::neural
