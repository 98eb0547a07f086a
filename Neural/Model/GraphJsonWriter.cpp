#include <nlohmann/json.hpp>

#include "Base/Invariant.h"
#include "Neural/Model/GraphJson.h"
#include "Neural/Model/GraphWords.h"
#include "Neural/Model/NeuralError.h"
#include "Neural/Model/Sha256.h"

namespace quillmere::neural {
namespace {

using Json = nlohmann::ordered_json;

// The text carries the SHA-256 of itself with these digits in the place of the checksum.
const std::string kBlankChecksum(64, '0');

std::string checksumOf(std::string_view text) { return Sha256::of(std::as_bytes(std::span(text))); }

template <class Table, class Key>
const char* nameIn(const Table& table, Key key) {
    for (const auto& [value, name] : table) {
        if (value == key) return name;
    }
    invariantBroken();
}

class OperationWriter {
public:
    OperationWriter(const Graph& graph, Json& json) : graph_(graph), json_(json) {}

    void operator()(const Convolution& op) {
        kind("convolution", {op.input});
        json_["outputs"] = op.outputs;
        json_["kernel"] = op.kernel;
        json_["weights"] = op.weights;
        json_["bias"] = op.bias;
        json_["activation"] = nameIn(kActivations, op.activation);
        if (op.activation == Activation::leakyRelu) json_["slope"] = op.slope;
        if (op.activation == Activation::prelu) json_["slopes"] = op.slopes;
    }
    void operator()(const Concatenation& op) { kind("concatenation", op.inputs); }
    void operator()(const WeightedSum& op) {
        kind("weightedSum", op.inputs);
        json_["factors"] = op.factors;
    }
    void operator()(const DepthToSpace& op) {
        kind("depthToSpace", {op.input});
        json_["factor"] = op.factor;
        json_["order"] = nameIn(kDepthOrders, op.order);
    }
    void operator()(const NearestEnlargement& op) {
        kind("nearestEnlargement", {op.input});
        json_["factor"] = op.factor;
    }

private:
    void kind(const char* name, const std::vector<ValueId>& inputs) {
        json_["kind"] = name;
        for (const ValueId input : inputs) json_["inputs"].push_back(graph_.values[input]);
    }

    const Graph& graph_;
    Json& json_;
};

Json writeProvenance(const Provenance& source) {
    Json json{{"package", source.package},
              {"version", source.version},
              {"integrity", source.integrity},
              {"licence", source.licence},
              {"files", Json::array()}};
    for (const SourceFile& file : source.files) {
        json["files"].push_back({{"path", file.path}, {"sha256", file.sha256}});
    }
    return json;
}

}  // namespace

std::string writeGraphJson(const ModelDescription& description) {
    const Graph& graph = description.graph;
    Json json{
        {"format", kFormatVersion},
        {"checksum", kBlankChecksum},
        {"input", {{"name", graph.values.front()}, {"channels", graph.inputChannels}}},
        {"output", graph.values[graph.output]},
        {"range", graph.range},
        {"licence", graph.licence},
        {"weights", {{"bytes", description.weightBytes}, {"sha256", description.weightsSha256}}},
        {"provenance", Json::array()},
        {"tensors", Json::array()},
        {"operations", Json::array()}};
    for (const Provenance& source : graph.provenance) {
        json["provenance"].push_back(writeProvenance(source));
    }
    for (const TensorInfo& tensor : graph.tensors) {
        json["tensors"].push_back(
            {{"offset", tensor.offset}, {"shape", tensor.shape}, {"sha256", tensor.sha256}});
    }
    for (std::size_t i = 0; i < graph.operations.size(); ++i) {
        Json operation{{"name", graph.values[i + 1]}};
        std::visit(OperationWriter(graph, operation), graph.operations[i]);
        json["operations"].push_back(std::move(operation));
    }
    std::string written = json.dump(1, ' ', false, Json::error_handler_t::replace) + "\n";
    const std::string checksum = checksumOf(written);
    written.replace(written.find(kBlankChecksum), checksum.size(), checksum);
    return written;
}

Result<void> verifyGraphJson(std::string_view text) {
    const Json json = Json::parse(text, nullptr, /*allow_exceptions=*/false);
    std::string stated;
    if (json.is_object() && json.contains("checksum") && json["checksum"].is_string()) {
        stated = json["checksum"].get<std::string>();
    }
    std::string blanked(text);
    const std::size_t at = blanked.find(stated);
    if (stated.size() == kBlankChecksum.size() && at != std::string::npos) {
        blanked.replace(at, stated.size(), kBlankChecksum);
        if (checksumOf(blanked) == stated) return {};
    }
    return makeError(ErrorCode::malformed, "The network's graph was changed after it was made.");
}

}  // namespace quillmere::neural
