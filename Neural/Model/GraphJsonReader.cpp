#include <cfloat>
#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <unordered_map>

#include "Neural/Model/GraphJson.h"
#include "Neural/Model/GraphWords.h"
#include "Neural/Model/NeuralError.h"

namespace quillmere::neural {
namespace {

using Json = nlohmann::ordered_json;

// What is wrong with the text; never leaves this file.
struct Malformed {
    std::string what;
};

const Json& field(const Json& object, const char* key) {
    if (!object.is_object()) throw Malformed{std::string("no object around \"") + key + "\""};
    const auto found = object.find(key);
    if (found == object.end()) throw Malformed{std::string("no \"") + key + "\""};
    return *found;
}

std::uint64_t natural(const Json& object, const char* key, std::uint64_t most) {
    const Json& value = field(object, key);
    if (!value.is_number_unsigned() || value.get<std::uint64_t>() > most) {
        throw Malformed{std::string("an impossible \"") + key + "\""};
    }
    return value.get<std::uint64_t>();
}

int integer(const Json& object, const char* key) {
    return static_cast<int>(natural(object, key, std::numeric_limits<int>::max()));
}

float real(const Json& value) {
    if (!value.is_number()) throw Malformed{"text in the place of a number"};
    const double number = value.get<double>();
    if (!(std::abs(number) <= FLT_MAX)) throw Malformed{"a number out of range"};
    return static_cast<float>(number);
}

std::string text(const Json& value) {
    if (!value.is_string()) throw Malformed{"something else in the place of text"};
    return value.get<std::string>();
}

std::string text(const Json& object, const char* key) { return text(field(object, key)); }

const Json& list(const Json& object, const char* key) {
    const Json& value = field(object, key);
    if (!value.is_array()) throw Malformed{std::string("no list at \"") + key + "\""};
    return value;
}

template <class Table>
auto keyIn(const Table& table, const std::string& name) {
    for (const auto& [value, known] : table) {
        if (name == known) return value;
    }
    throw Malformed{"an unknown word \"" + name + "\""};
}

class OperationReader {
public:
    OperationReader(const std::unordered_map<std::string, ValueId>& values, const Json& json)
        : values_(values), json_(json) {}

    Operation read() const {
        const std::string kind = text(json_, "kind");
        if (kind == "convolution") return convolution();
        if (kind == "concatenation") return Concatenation{inputs()};
        if (kind == "weightedSum") return weightedSum();
        if (kind == "depthToSpace") {
            return DepthToSpace{input(), integer(json_, "factor"),
                                keyIn(kDepthOrders, text(json_, "order"))};
        }
        if (kind == "nearestEnlargement") {
            return NearestEnlargement{input(), integer(json_, "factor")};
        }
        throw Malformed{"an unknown operation \"" + kind + "\""};
    }

private:
    std::vector<ValueId> inputs() const {
        std::vector<ValueId> ids;
        for (const Json& name : list(json_, "inputs")) {
            const auto found = values_.find(text(name));
            if (found == values_.end()) {
                throw Malformed{"an input \"" + text(name) + "\" that nothing before it computes"};
            }
            ids.push_back(found->second);
        }
        return ids;
    }

    ValueId input() const {
        const std::vector<ValueId> ids = inputs();
        if (ids.size() != 1) throw Malformed{"an input too many or too few"};
        return ids.front();
    }

    Convolution convolution() const {
        Convolution op;
        op.input = input();
        op.outputs = integer(json_, "outputs");
        op.kernel = integer(json_, "kernel");
        op.weights = tensor("weights");
        op.bias = tensor("bias");
        op.activation = keyIn(kActivations, text(json_, "activation"));
        if (op.activation == Activation::leakyRelu) op.slope = real(field(json_, "slope"));
        if (op.activation == Activation::prelu) op.slopes = tensor("slopes");
        return op;
    }

    WeightedSum weightedSum() const {
        WeightedSum op{inputs(), {}};
        for (const Json& factor : list(json_, "factors")) op.factors.push_back(real(factor));
        return op;
    }

    TensorId tensor(const char* key) const {
        return natural(json_, key, std::numeric_limits<std::uint32_t>::max());
    }

    const std::unordered_map<std::string, ValueId>& values_;
    const Json& json_;
};

TensorInfo readTensor(const Json& json, std::uint64_t weightBytes) {
    constexpr std::uint64_t kMost = std::uint64_t{1} << 40;
    TensorInfo tensor;
    tensor.offset = natural(json, "offset", kMost);
    tensor.sha256 = text(json, "sha256");
    std::uint64_t bytes = sizeof(std::uint16_t);
    for (const Json& value : list(json, "shape")) {
        if (!value.is_number_unsigned()) throw Malformed{"a shape that is no size"};
        const auto dimension = value.get<std::uint64_t>();
        if (dimension == 0 || dimension > kMost / bytes) throw Malformed{"an absurd shape"};
        if (dimension > std::uint64_t{std::numeric_limits<int>::max()}) {
            throw Malformed{"an absurd shape"};
        }
        bytes *= dimension;
        tensor.shape.push_back(static_cast<int>(dimension));
    }
    if (tensor.offset % kTensorAlignment != 0) throw Malformed{"a tensor out of line"};
    if (bytes > weightBytes || tensor.offset > weightBytes - bytes) {
        throw Malformed{"a tensor outside its weights"};
    }
    return tensor;
}

Provenance readProvenance(const Json& json) {
    Provenance source{text(json, "package"),
                      text(json, "version"),
                      text(json, "integrity"),
                      text(json, "licence"),
                      {}};
    for (const Json& file : list(json, "files")) {
        source.files.push_back({text(file, "path"), text(file, "sha256")});
    }
    return source;
}

ModelDescription readDescription(const Json& json) {
    ModelDescription description;
    const Json& weights = field(json, "weights");
    description.weightBytes = natural(weights, "bytes", std::uint64_t{1} << 40);
    description.weightsSha256 = text(weights, "sha256");

    Graph& graph = description.graph;
    graph.values.push_back(text(field(json, "input"), "name"));
    graph.inputChannels = integer(field(json, "input"), "channels");
    graph.range = integer(json, "range");
    graph.licence = text(json, "licence");
    std::unordered_map<std::string, ValueId> values{{graph.values.front(), 0}};
    for (const Json& operation : list(json, "operations")) {
        graph.operations.push_back(OperationReader(values, operation).read());
        graph.values.push_back(text(operation, "name"));
        if (!values.emplace(graph.values.back(), graph.values.size() - 1).second) {
            throw Malformed{"two values of the name \"" + graph.values.back() + "\""};
        }
    }
    const auto output = values.find(text(json, "output"));
    if (output == values.end()) throw Malformed{"an output that nothing computes"};
    graph.output = output->second;
    for (const Json& tensor : list(json, "tensors")) {
        graph.tensors.push_back(readTensor(tensor, description.weightBytes));
    }
    for (const Json& source : list(json, "provenance")) {
        graph.provenance.push_back(readProvenance(source));
    }
    return description;
}

}  // namespace

Result<ModelDescription> parseGraphJson(std::string_view text) {
    const Json json = Json::parse(text, nullptr, /*allow_exceptions=*/false);
    if (json.is_discarded()) {
        return makeError(ErrorCode::malformed, "The network's graph is not valid JSON.");
    }
    try {
        const std::uint64_t format =
            natural(json, "format", std::numeric_limits<std::uint64_t>::max());
        if (format != kFormatVersion) {
            return makeError(ErrorCode::unsupportedVersion,
                             "The network was compiled for another version of this program "
                             "(format " +
                                 std::to_string(format) + "); compile it again.");
        }
        return readDescription(json);
    } catch (const Malformed& malformed) {
        return makeError(ErrorCode::malformed, "The network's graph has " + malformed.what + ".");
    }
}

}  // namespace quillmere::neural
