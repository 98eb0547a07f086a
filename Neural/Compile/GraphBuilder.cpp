#include "Neural/Compile/GraphBuilder.h"

#include <algorithm>
#include <utility>

#include "Neural/Model/NeuralError.h"

namespace quillmere::neural {

std::vector<Half> halves(std::span<const float> values) {
    std::vector<Half> result(values.size());
    std::transform(values.begin(), values.end(), result.begin(), toHalf);
    return result;
}

Error importError(const std::filesystem::path& file, const ImportFailure& failure) {
    return makeError(ErrorCode::unsupported,
                     file.string() + " can't be imported: " + failure.sentence + ".");
}

GraphBuilder::GraphBuilder(const std::string& inputName, int inputChannels, int range)
    : channels_{inputChannels}, uses_(1) {
    contents_.graph.values.push_back(inputName);
    contents_.graph.inputChannels = inputChannels;
    contents_.graph.range = range;
    define(inputName, {0, 1});
}

GraphBuilder::Operand GraphBuilder::find(const std::string& name) const {
    const auto found = names_.find(name);
    if (found == names_.end()) {
        throw ImportFailure{"\"" + name +
                            "\" is read before it is computed, or after an "
                            "activation has taken its place"};
    }
    return found->second;
}

// A multiplied value that is read by something other than a sum must be computed after all.
ValueId GraphBuilder::read(const std::string& name) {
    Operand operand = find(name);
    if (operand.factor != 1) {
        names_.erase(name);
        append(name, WeightedSum{{operand.value}, {operand.factor}}, channels_[operand.value]);
        operand = find(name);
    }
    uses_[operand.value].read = true;
    return operand.value;
}

void GraphBuilder::define(const std::string& name, Operand operand) {
    const bool printable =
        std::all_of(name.begin(), name.end(), [](char c) { return c >= ' ' && c <= '~'; });
    if (!printable) throw ImportFailure{"a name is not plain ASCII"};
    if (name.empty() || !names_.emplace(name, operand).second) {
        throw ImportFailure{"\"" + name + "\" is computed twice"};
    }
}

void GraphBuilder::append(const std::string& name, Operation operation, int channels) {
    define(name, {contents_.graph.values.size(), 1});
    contents_.graph.values.push_back(name);
    contents_.graph.operations.push_back(std::move(operation));
    channels_.push_back(channels);
    uses_.emplace_back();
}

TensorId GraphBuilder::addTensor(std::vector<int> shape, std::vector<Half> values) {
    TensorInfo info{0, std::move(shape), {}};
    if (info.elements() != values.size()) {
        throw ImportFailure{"weights have another length than their layer needs"};
    }
    if (!std::all_of(values.begin(), values.end(), isFinite)) {
        throw ImportFailure{"weights hold something that is no number, or too large a one"};
    }
    contents_.graph.tensors.push_back(std::move(info));
    contents_.tensors.push_back(std::move(values));
    return contents_.tensors.size() - 1;
}

int GraphBuilder::channelsOf(const std::string& value) const {
    return channels_[find(value).value];
}

void GraphBuilder::convolution(const std::string& name, const std::string& input, int kernel,
                               std::vector<Half> weights, std::span<const float> bias) {
    Convolution op;
    op.input = read(input);
    op.outputs = static_cast<int>(bias.size());
    op.kernel = kernel;
    op.weights = addTensor({op.outputs, channels_[op.input], kernel, kernel}, std::move(weights));
    op.bias = addTensor({op.outputs}, halves(bias));
    append(name, op, op.outputs);
}

void GraphBuilder::activation(const std::string& name, const std::string& input, Activation kind,
                              float slope, std::span<const float> slopes) {
    const Operand operand = find(input);
    Convolution* convolution = nullptr;
    if (operand.value > 0 && operand.factor == 1) {
        convolution = std::get_if<Convolution>(&contents_.graph.operations[operand.value - 1]);
    }
    const Use use = uses_[operand.value];
    if (convolution == nullptr || convolution->activation != Activation::none || use.read ||
        use.several) {
        throw ImportFailure{"the activation \"" + name +
                            "\" doesn't follow a convolution of its own"};
    }
    convolution->activation = kind;
    convolution->slope = slope;
    if (kind == Activation::prelu) {
        convolution->slopes = addTensor({convolution->outputs}, halves(slopes));
    }
    names_.erase(input);
    define(name, operand);
    contents_.graph.values[operand.value] = name;
}

void GraphBuilder::concatenation(const std::string& name, std::span<const std::string> inputs) {
    Concatenation op;
    int channels = 0;
    for (const std::string& input : inputs) {
        op.inputs.push_back(read(input));
        channels += channels_[op.inputs.back()];
    }
    append(name, std::move(op), channels);
}

void GraphBuilder::weightedSum(const std::string& name, std::span<const std::string> inputs,
                               std::span<const float> factors) {
    if (inputs.empty() || inputs.size() != factors.size()) {
        throw ImportFailure{"the sum \"" + name + "\" has a factor too many or too few"};
    }
    WeightedSum op;
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        const Operand operand = find(inputs[i]);
        uses_[operand.value].read = true;
        op.inputs.push_back(operand.value);
        op.factors.push_back(operand.factor * factors[i]);
    }
    const int channels = channels_[op.inputs.front()];
    append(name, std::move(op), channels);
}

void GraphBuilder::multiplication(const std::string& name, const std::string& input, float factor) {
    const Operand operand = find(input);
    uses_[operand.value].several = true;
    define(name, {operand.value, operand.factor * factor});
}

void GraphBuilder::depthToSpace(const std::string& name, const std::string& input, int factor,
                                DepthOrder order) {
    const ValueId value = read(input);
    append(name, DepthToSpace{value, factor, order},
           factor > 0 ? channels_[value] / (factor * factor) : 0);
}

void GraphBuilder::nearestEnlargement(const std::string& name, const std::string& input,
                                      int factor) {
    const ValueId value = read(input);
    append(name, NearestEnlargement{value, factor}, channels_[value]);
}

void GraphBuilder::alias(const std::string& name, const std::string& input) {
    const Operand operand = find(input);
    uses_[operand.value].several = true;
    define(name, operand);
}

ModelContents GraphBuilder::finish(const std::string& output, Provenance provenance) {
    contents_.graph.output = read(output);
    contents_.graph.licence = provenance.licence;
    contents_.graph.provenance.push_back(std::move(provenance));
    if (auto shapes = inferShapes(contents_.graph); !shapes) {
        throw ImportFailure{shapes.error().localizedDescription};
    }
    return std::move(contents_);
}

}  // namespace quillmere::neural
