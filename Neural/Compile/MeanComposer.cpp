#include <algorithm>

#include "Neural/Compile/Importers.h"
#include "Neural/Model/NeuralError.h"

namespace quillmere::neural {
namespace {

// Moves an operation of a part to where the part's values and tensors lie in the whole. A part's
// input is the whole's input.
class Relocation {
public:
    Relocation(std::size_t values, std::size_t tensors) : values_(values), tensors_(tensors) {}

    ValueId value(ValueId id) const { return id == 0 ? 0 : values_ + id - 1; }

    Operation operator()(Convolution op) const {
        op.input = value(op.input);
        op.weights += tensors_;
        op.bias += tensors_;
        if (op.activation == Activation::prelu) op.slopes += tensors_;
        return op;
    }
    Operation operator()(Concatenation op) const { return values(std::move(op)); }
    Operation operator()(WeightedSum op) const { return values(std::move(op)); }
    Operation operator()(DepthToSpace op) const { return single(op); }
    Operation operator()(NearestEnlargement op) const { return single(op); }

private:
    template <class Op>
    Operation values(Op op) const {
        for (ValueId& input : op.inputs) input = value(input);
        return op;
    }
    template <class Op>
    Operation single(Op op) const {
        op.input = value(op.input);
        return op;
    }

    std::size_t values_;
    std::size_t tensors_;
};

bool agree(const CompiledModel& a, const CompiledModel& b) {
    return a.graph().range == b.graph().range &&
           a.graph().inputChannels == b.graph().inputChannels &&
           a.shapes()[a.graph().output] == b.shapes()[b.graph().output];
}

// "MIT AND Apache-2.0": each licence once, in the order of the parts.
std::string joinedLicence(std::span<const CompiledModel> models) {
    std::vector<std::string> seen;
    std::string joined;
    for (const CompiledModel& model : models) {
        const std::string& licence = model.graph().licence;
        if (std::find(seen.begin(), seen.end(), licence) != seen.end()) continue;
        seen.push_back(licence);
        joined += (joined.empty() ? "" : " AND ") + licence;
    }
    return joined;
}

}  // namespace

Result<ModelContents> composeMean(std::span<const CompiledModel> models,
                                  const std::string& inputName) {
    if (models.empty()) return makeError(ErrorCode::unsupported, "There is nothing to average.");
    ModelContents whole;
    Graph& graph = whole.graph;
    graph.values.push_back(inputName);
    graph.inputChannels = models.front().graph().inputChannels;
    graph.range = models.front().graph().range;
    graph.licence = joinedLicence(models);
    WeightedSum mean;
    for (std::size_t part = 0; part < models.size(); ++part) {
        const CompiledModel& model = models[part];
        if (!agree(models.front(), model)) {
            return makeError(ErrorCode::unsupported,
                             "Only networks of the same range, channels and scale have a mean.");
        }
        const Relocation relocation(graph.values.size(), whole.tensors.size());
        for (std::size_t n = 0; n < model.graph().operations.size(); ++n) {
            graph.operations.push_back(std::visit(relocation, model.graph().operations[n]));
            graph.values.push_back(std::to_string(part + 1) + "/" + model.graph().values[n + 1]);
        }
        for (TensorId id = 0; id < model.graph().tensors.size(); ++id) {
            const std::span<const Half> values = model.tensor(id);
            graph.tensors.push_back(model.graph().tensors[id]);
            whole.tensors.emplace_back(values.begin(), values.end());
        }
        graph.provenance.insert(graph.provenance.end(), model.graph().provenance.begin(),
                                model.graph().provenance.end());
        mean.inputs.push_back(relocation.value(model.graph().output));
        mean.factors.push_back(1.0f / static_cast<float>(models.size()));
    }
    graph.operations.push_back(std::move(mean));
    graph.values.push_back("mean");
    graph.output = graph.values.size() - 1;
    if (auto shapes = inferShapes(graph); !shapes) return shapes.error();
    return whole;
}

}  // namespace quillmere::neural
