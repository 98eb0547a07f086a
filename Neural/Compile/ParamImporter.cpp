#include <cstring>
#include <set>
#include <sstream>

#include "Neural/Compile/Importers.h"
#include "Neural/Compile/ParamLayer.h"
#include "Neural/Compile/SourceFiles.h"
#include "Neural/Model/NeuralError.h"

namespace quillmere::neural {
namespace {

constexpr int kMagic = 7767517;
constexpr std::uint32_t kHalfPrecisionTag = 0x01306B47;
constexpr int kMaxOutputs = 1 << 16;  // before anything is allocated for them

[[noreturn]] void fail(std::string sentence) { throw ImportFailure{std::move(sentence)}; }

// The weights, read from front to back.
class Weights {
public:
    explicit Weights(std::span<const std::byte> bytes) : left_(bytes) {}

    // Single values are aligned to four bytes, whatever lies before.
    template <class Number>
    std::vector<Number> take(std::size_t count) {
        const std::size_t bytes = (count * sizeof(Number) + 3) / 4 * 4;
        if (bytes > left_.size()) fail("the weights end too early");
        std::vector<Number> numbers(count);
        if (count > 0) std::memcpy(numbers.data(), left_.data(), count * sizeof(Number));
        left_ = left_.subspan(bytes);
        return numbers;
    }

    bool empty() const { return left_.empty(); }

private:
    std::span<const std::byte> left_;
};

class ParamReader {
public:
    ParamReader(const std::string& text, std::span<const std::byte> weights,
                const ImportOptions& options)
        : text_(text),
          weights_(weights),
          inputName_(options.inputName),
          builder_(options.inputName, kInputChannels, options.range) {}

    ModelContents read(Provenance provenance) {
        std::string line;
        if (!std::getline(text_, line) || parseHeader(line).front() != kMagic) {
            fail("the graph doesn't begin with " + std::to_string(kMagic));
        }
        std::getline(text_, line);
        const std::vector<int> counts = parseHeader(line);
        int layers = 0;
        while (std::getline(text_, line)) {
            if (line.find_first_not_of(" \t\r") == std::string::npos) continue;
            add(ParamLayer::parse(line));
            ++layers;
        }
        if (counts.size() != 2 || counts.front() != layers) {
            fail("the graph has another number of layers than it says");
        }
        if (!sawInput_) fail("the graph has no input");
        if (!weights_.empty()) fail("the weights go on after the last layer");
        if (unread_.size() != 1) fail("the graph doesn't have one output");
        return builder_.finish(*unread_.begin(), std::move(provenance));
    }

private:
    static constexpr int kInputChannels = 3;

    static std::vector<int> parseHeader(const std::string& line) {
        std::istringstream words(line);
        std::vector<int> numbers;
        for (std::string word; words >> word;) numbers.push_back(ParamLayer::parseInteger(word));
        if (numbers.empty()) fail("the graph's first lines are missing");
        return numbers;
    }

    void add(ParamLayer layer) {
        for (const std::string& input : layer.inputs) unread_.erase(input);
        for (const std::string& output : layer.outputs) unread_.insert(output);
        if (layer.type == "Input") {
            addInput(layer);
        } else if (layer.type == "Split") {
            if (layer.inputs.size() != 1) layer.refuse("has not one input");
            for (const std::string& output : layer.outputs) {
                builder_.alias(output, layer.inputs[0]);
            }
        } else if (layer.type == "Convolution") {
            addConvolution(layer);
        } else if (layer.type == "PReLU") {
            layer.expect(1, 1);
            if (layer.integer(0) != builder_.channelsOf(layer.inputs[0])) {
                layer.refuse("has not one slope for each channel");
            }
            const std::size_t channels = builder_.channelsOf(layer.inputs[0]);
            builder_.activation(layer.outputs[0], layer.inputs[0], Activation::prelu, 0,
                                weights_.take<float>(channels));
        } else if (layer.type == "Concat") {
            if (layer.integer(0, 0) != 0) layer.refuse("joins something else than channels");
            if (layer.outputs.size() != 1) layer.refuse("has not one output");
            builder_.concatenation(layer.outputs[0], layer.inputs);
        } else if (layer.type == "Eltwise" || layer.type == "BinaryOp") {
            addSum(layer);
        } else if (layer.type == "Interp") {
            layer.expect(1, 1);
            if (layer.integer(0) != 1) layer.refuse("enlarges otherwise than by nearest pixels");
            const int factor = layer.factor(1);
            if (layer.factor(2) != factor) layer.refuse("enlarges differently across and down");
            builder_.nearestEnlargement(layer.outputs[0], layer.inputs[0], factor);
        } else if (layer.type == "PixelShuffle") {
            layer.expect(1, 1);
            if (layer.integer(1, 0) != 0) layer.refuse("has another order of channels");
            builder_.depthToSpace(layer.outputs[0], layer.inputs[0], layer.integer(0),
                                  DepthOrder::channelFirst);
        } else {
            layer.refuse("is of a kind that is not supported");
        }
        layer.expectNoMore();
    }

    void addInput(const ParamLayer& layer) {
        layer.expect(0, 1);
        if (sawInput_) layer.refuse("is a second input");
        sawInput_ = true;
        if (layer.outputs[0] != inputName_) {
            builder_.alias(layer.outputs[0], inputName_);
        }
    }

    void addConvolution(ParamLayer& layer) {
        layer.expect(1, 1);
        const int outputs = layer.integer(0);
        const int kernel = layer.integer(1);
        if (outputs < 1 || outputs > kMaxOutputs) layer.refuse("has an absurd number of outputs");
        if (kernel != 1 && kernel != 3 && kernel != 5) layer.refuse("has an unsupported kernel");
        if (layer.integer(2, 1) != 1) layer.refuse("is dilated, which is not supported");
        if (layer.integer(3, 1) != 1) layer.refuse("has a stride, which is not supported");
        if (layer.integer(4, 0) != kernel / 2) layer.refuse("doesn't keep the image's size");
        const bool biased = layer.integer(5, 0) != 0;
        const std::int64_t count =
            std::int64_t{outputs} * kernel * kernel * builder_.channelsOf(layer.inputs[0]);
        if (layer.integer(6) != count) layer.refuse("has another number of weights than it needs");
        const int activation = layer.integer(9, 0);
        const std::vector<float> slopes = layer.list(-23310);
        if (weights_.take<std::uint32_t>(1).front() != kHalfPrecisionTag) {
            layer.refuse("has weights that are not in half precision");
        }
        std::vector<Half> weights = weights_.take<Half>(static_cast<std::size_t>(count));
        const std::vector<float> bias =
            biased ? weights_.take<float>(outputs) : std::vector<float>(outputs);

        constexpr int kLeaky = 2;
        if (activation == 0 && slopes.empty()) {
            builder_.convolution(layer.outputs[0], layer.inputs[0], kernel, std::move(weights),
                                 bias);
        } else if (activation == kLeaky && slopes.size() == 1) {
            const std::string before = layer.outputs[0] + " before its activation";
            builder_.convolution(before, layer.inputs[0], kernel, std::move(weights), bias);
            builder_.activation(layer.outputs[0], before, Activation::leakyRelu, slopes.front());
        } else {
            layer.refuse("has an activation that is not supported");
        }
    }

    void addSum(ParamLayer& layer) {
        constexpr int kSumOfEltwise = 1;
        constexpr int kSumOfBinary = 0;
        std::vector<float> factors;
        if (layer.type == "Eltwise") {
            if (layer.integer(0) != kSumOfEltwise) layer.refuse("is not a sum");
            factors = layer.list(-23301);
        } else if (layer.integer(0, 0) != kSumOfBinary || layer.inputs.size() != 2) {
            layer.refuse("is not a sum of two");
        }
        if (layer.outputs.size() != 1) layer.refuse("has not one output");
        if (factors.empty()) factors.assign(layer.inputs.size(), 1.0f);
        builder_.weightedSum(layer.outputs[0], layer.inputs, factors);
    }

    std::istringstream text_;
    Weights weights_;
    const std::string inputName_;
    GraphBuilder builder_;
    bool sawInput_ = false;
    std::set<std::string> unread_;
};

}  // namespace

Result<ModelContents> importParam(const std::filesystem::path& param,
                                  const std::filesystem::path& bin,
                                  const ImportOptions& options) try {
    SourceFiles files(options.root);
    const MappedFile graph = files.open(param);
    const MappedFile weights = files.open(bin);
    Provenance provenance = options.provenance;
    provenance.files = files.opened();
    const std::string text(reinterpret_cast<const char*>(graph.bytes().data()),
                           graph.bytes().size());
    return ParamReader(text, weights.bytes(), options).read(std::move(provenance));
} catch (const ImportFailure& failure) {
    return importError(param, failure);
}

}  // namespace quillmere::neural
