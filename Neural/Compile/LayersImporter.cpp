#include <cstring>
#include <nlohmann/json.hpp>
#include <set>

#include "Neural/Compile/Importers.h"
#include "Neural/Compile/ShardedTensors.h"
#include "Neural/Compile/SourceFiles.h"
#include "Neural/Model/NeuralError.h"

namespace quillmere::neural {
namespace {

using Json = nlohmann::json;

// A layer of the topology. Reading what is not there, or of another type, throws Json::exception.
struct Layer {
    std::string type;
    std::string name;
    Json config;
    std::vector<std::string> inputs;

    explicit Layer(const Json& json)
        : type(json.at("class_name").get<std::string>()),
          name(json.at("name").get<std::string>()),
          config(json.at("config")) {
        const Json& calls = json.at("inbound_nodes");
        if (calls.size() > 1) refuse("is used more than once");
        for (const Json& input : calls.empty() ? Json::array() : calls.at(0)) {
            inputs.push_back(input.at(0).get<std::string>());
            if (input.at(1) != 0 || input.at(2) != 0) refuse("reads another output than the first");
        }
    }

    [[noreturn]] void refuse(const std::string& what) const {
        throw ImportFailure{"the layer \"" + name + "\" (" + type + ") " + what};
    }

    const std::string& input() const {
        if (inputs.size() != 1) refuse("has not one input");
        return inputs.front();
    }

    void expect(const char* key, const Json& value) const {
        if (config.at(key) != value) refuse("has another \"" + std::string(key) + "\"");
    }

    // A whole number that is small enough to be a size here.
    int size(const Json& value) const {
        if (!value.is_number_unsigned() || value.get<std::uint64_t>() > 65536) {
            refuse("has an absurd size");
        }
        return value.get<int>();
    }

    // [n, n]
    int square(const char* key) const {
        const Json& sides = config.at(key);
        if (sides.size() != 2 || sides.at(0) != sides.at(1)) refuse("isn't square");
        return size(sides.at(0));
    }
};

// [row][column][input][output] -> [output][input][row][column]
std::vector<float> outputsFirst(const ShardedTensors::Tensor& kernel) {
    const std::size_t taps = kernel.shape[0] * kernel.shape[1];
    const std::size_t inputs = kernel.shape[2];
    const std::size_t outputs = kernel.shape[3];
    std::vector<float> turned(kernel.values.size());
    for (std::size_t tap = 0; tap < taps; ++tap) {
        for (std::size_t in = 0; in < inputs; ++in) {
            for (std::size_t out = 0; out < outputs; ++out) {
                turned[(out * inputs + in) * taps + tap] =
                    kernel.values[(tap * inputs + in) * outputs + out];
            }
        }
    }
    return turned;
}

class LayersReader {
public:
    LayersReader(const ShardedTensors& tensors, const ImportOptions& options)
        : tensors_(tensors),
          inputName_(options.inputName),
          builder_(options.inputName, kInputChannels, options.range) {}

    ModelContents read(const Json& topology, Provenance provenance) {
        const Json& model = topology.at("model_config").at("config");
        for (const Json& layer : model.at("layers")) add(Layer(layer));
        if (!sawInput_) throw ImportFailure{"the topology has no input"};
        const Json& outputs = model.at("output_layers");
        if (outputs.size() != 1) throw ImportFailure{"the topology doesn't have one output"};
        return builder_.finish(outputs.at(0).at(0).get<std::string>(), std::move(provenance));
    }

private:
    static constexpr int kInputChannels = 3;

    void add(const Layer& layer) {
        if (layer.type == "InputLayer") {
            addInput(layer);
        } else if (layer.type == "Conv2D") {
            addConvolution(layer);
        } else if (layer.type == "Activation") {
            layer.expect("activation", "relu");
            builder_.activation(layer.name, layer.input(), Activation::relu);
        } else if (layer.type == "Concatenate") {
            const Json& axis = layer.config.at("axis");
            if (axis != -1 && axis != 3) layer.refuse("joins something else than channels");
            builder_.concatenation(layer.name, layer.inputs);
        } else if (layer.type == "Add") {
            builder_.weightedSum(layer.name, layer.inputs,
                                 std::vector<float>(layer.inputs.size(), 1.0f));
        } else if (layer.type == "MultiplyBeta") {
            builder_.multiplication(layer.name, layer.input(),
                                    layer.config.at("beta").get<float>());
        } else if (layer.type == "PixelShuffle" || layer.type == "PixelShuffle4x") {
            builder_.depthToSpace(layer.name, layer.input(), layer.size(layer.config.at("scale")),
                                  DepthOrder::phaseFirst);
        } else if (layer.type == "UpSampling2D") {
            layer.expect("interpolation", "nearest");
            layer.expect("data_format", "channels_last");
            builder_.nearestEnlargement(layer.name, layer.input(), layer.square("size"));
        } else {
            layer.refuse("is of a kind that is not supported");
        }
    }

    void addInput(const Layer& layer) {
        if (sawInput_) layer.refuse("is a second input");
        sawInput_ = true;
        if (layer.config.at("batch_input_shape") != Json{nullptr, nullptr, nullptr, 3}) {
            layer.refuse("is not a colour image of any size");
        }
        if (layer.name != inputName_) builder_.alias(layer.name, inputName_);
    }

    void addConvolution(const Layer& layer) {
        layer.expect("data_format", "channels_last");
        layer.expect("strides", {1, 1});
        layer.expect("dilation_rate", {1, 1});
        if (layer.config.value("groups", 1) != 1) layer.refuse("has groups");
        const int outputs = layer.size(layer.config.at("filters"));
        const int kernel = layer.square("kernel_size");
        if (kernel > 1) layer.expect("padding", "same");  // a single weight needs none
        const int inputs = builder_.channelsOf(layer.input());
        const auto& weights = tensors_.find(layer.name + "/kernel");
        const auto side = static_cast<std::size_t>(kernel);
        if (weights.shape != std::vector<std::size_t>{side, side, static_cast<std::size_t>(inputs),
                                                      static_cast<std::size_t>(outputs)}) {
            layer.refuse("has weights of another shape");
        }
        std::vector<float> bias(outputs);
        if (layer.config.at("use_bias").get<bool>())
            bias = tensors_.find(layer.name + "/bias").values;
        if (bias.size() != static_cast<std::size_t>(outputs)) {
            layer.refuse("has a bias of another shape");
        }
        const Json& activation = layer.config.at("activation");
        const bool rectified = activation == "relu";
        if (!rectified && activation != "linear") {
            layer.refuse("has an activation that is not supported");
        }
        const std::string name = rectified ? layer.name + " before its activation" : layer.name;
        builder_.convolution(name, layer.input(), kernel, halves(outputsFirst(weights)), bias);
        if (rectified) builder_.activation(layer.name, name, Activation::relu);
    }

    const ShardedTensors& tensors_;
    const std::string inputName_;
    GraphBuilder builder_;
    bool sawInput_ = false;
};

}  // namespace

Result<ModelContents> importLayers(const std::filesystem::path& modelJson,
                                   const ImportOptions& options) try {
    SourceFiles files(options.root);
    const MappedFile file = files.open(modelJson);
    const Json model =
        Json::parse(reinterpret_cast<const char*>(file.bytes().data()),
                    reinterpret_cast<const char*>(file.bytes().data()) + file.bytes().size());
    if (model.at("format") != "layers-model") throw ImportFailure{"it is of another format"};
    const ShardedTensors tensors(model.at("weightsManifest"), modelJson.parent_path(), files);
    Provenance provenance = options.provenance;
    provenance.files = files.opened();
    return LayersReader(tensors, options).read(model.at("modelTopology"), std::move(provenance));
} catch (const ImportFailure& failure) {
    return importError(modelJson, failure);
} catch (const Json::exception& failure) {
    return importError(modelJson,
                       {std::string("its JSON is not as expected (") + failure.what() + ")"});
}

}  // namespace quillmere::neural
