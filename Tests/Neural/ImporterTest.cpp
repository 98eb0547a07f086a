// Published weights: small ones made by hand, and everything that can be wrong with them.
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <nlohmann/json.hpp>

#include "Neural/Compile/Importers.h"
#include "Neural/Model/NeuralError.h"
#include "Neural/Model/Sha256.h"
#include "Neural/Reference/ReferenceNetwork.h"
#include "Tests/Neural/TestModels.h"

namespace quillmere::neural {
namespace {

using Json = nlohmann::json;

template <class Number>
std::string bytesOf(std::vector<Number> numbers) {
    std::string bytes((numbers.size() * sizeof(Number) + 3) / 4 * 4, '\0');
    if (!numbers.empty())
        std::memcpy(bytes.data(), numbers.data(), numbers.size() * sizeof(Number));
    return bytes;
}

std::string halfWeights(const std::vector<float>& weights) {
    return bytesOf<std::uint32_t>({0x01306B47}) + bytesOf(halves(weights));
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    const std::size_t at = text.find(from);
    if (at == std::string::npos) ADD_FAILURE() << "the test's own text lacks " << from;
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

class ImporterTest : public testing::Test {
protected:
    ImportOptions options() const {
        return {folder_.path(), "in", 1, {"a package", "1.0", "sha512-x", "MIT", {}}};
    }

    PlanarImage evaluate(const ModelContents& contents, const PlanarImage& image) {
        return *evaluateReference(compiled(contents, folder_ / "model"), image);
    }

    Result<ModelContents> param(const std::string& graph, const std::string& weights) {
        writeFile(folder_ / "net.param", graph);
        writeFile(folder_ / "net.bin", weights);
        return importParam("net.param", "net.bin", options());
    }

    Result<ModelContents> layers(const Json& model, const std::string& weights) {
        writeFile(folder_ / "net.json", model.dump());
        writeFile(folder_ / "shard1", weights.substr(0, 5));
        writeFile(folder_ / "shard2", weights.size() > 5 ? weights.substr(5) : "");
        return importLayers("net.json", options());
    }

    TemporaryFolder folder_;
};

// Every layer and parameter that the text graph may have, one channel each way at the end.
const std::string kParam =
    "7767517\n"
    "11 16\n"
    "Input in 0 1 data\n"
    "Split split 1 3 data d0 d1 d2\n"
    "Convolution conv 1 1 d0 a 0=3 1=1 4=0 5=1 6=9 9=2 -23310=1,5.000000e-01\n"
    "Concat cat 2 1 a d1 b 0=0\n"
    "Convolution conv2 1 1 b c 0=12 1=1 6=72\n"
    "PReLU prelu 1 1 c d 0=12\n"
    "PixelShuffle shuffle 1 1 d e 0=2\n"
    "Interp up 1 1 d2 f 0=1 1=2.000000e+00 2=2.000000e+00\n"
    "Split split2 1 2 e e0 e1\n"
    "Eltwise sum 2 1 e0 f g 0=1 -23301=2,2.500000e-01,1.000000e+00\n"
    "BinaryOp add 2 1 g e1 h 0=0\n";

std::string paramWeights() {
    std::vector<float> second(72);
    for (int o = 0; o < 12; ++o) second[o * 6 + o % 6] = static_cast<float>(o + 1);
    std::vector<float> slopes(12);
    for (int o = 0; o < 12; ++o) slopes[o] = 0.5f;
    // The first convolution: channels (r, -g, b + 1), then halved where negative.
    return halfWeights({1, 0, 0, 0, -1, 0, 0, 0, 1}) + bytesOf<float>({0, 0, 1}) +
           halfWeights(second) + bytesOf(slopes);
}

TEST_F(ImporterTest, ATextGraphMeansSomethingElse) {
    const auto contents = param(kParam, paramWeights());
    ASSERT_TRUE(contents) << contents.error().localizedDescription;
    const PlanarImage pixel{3, {1, 1}, {2, 4, -6}};
    const PlanarImage out = evaluate(*contents, pixel);
    ASSERT_EQ(out.channels, 3);
    ASSERT_EQ(out.size, (PixelSize{2, 2}));
    // b = (2, -4 / 2, -5 / 2, 2, 4, -6); d[o] = b[o % 6] * (o + 1), halved where negative.
    const float b[6] = {2, -2, -2.5f, 2, 4, -6};
    for (int c = 0; c < 3; ++c) {
        for (int phase = 0; phase < 4; ++phase) {
            const int o = c * 4 + phase;
            float d = b[o % 6] * static_cast<float>(o + 1);
            if (d < 0) d *= 0.5f;
            EXPECT_FLOAT_EQ(out.row(c, phase / 2)[phase % 2], 1.25f * d + pixel.values[c]) << o;
        }
    }
    const Provenance& source = contents->graph.provenance.front();
    ASSERT_EQ(source.files.size(), 2u);
    EXPECT_EQ(source.files[1].path, "net.bin");
    const std::string weights = paramWeights();
    EXPECT_EQ(source.files[1].sha256, Sha256::of(std::as_bytes(std::span(weights))));
}

TEST_F(ImporterTest, ATextGraphThatCanNotBeExpressedIsImported) {
    struct Case {
        const char* fault;
        const char* from;
        const char* to;
    };
    for (const Case& c : std::initializer_list<Case>{
             {"another magic number", "7767517", "7767518"},
             {"no numbers", "7767517\n11 16", "x\ny"},
             {"a layer too few", "11 16", "12 16"},
             {"an unknown layer", "BinaryOp", "Softmax"},
             {"no input", "Input in 0 1 data\n", ""},
             {"two inputs", "Split split 1", "Input in2 0 1 data2\nSplit split 1"},
             {"a size of the input", "0 1 data\n", "0 1 data 0=256\n"},
             {"a value that nobody computes", "1 1 d0 a", "1 1 z a"},
             {"a value that is computed twice", "1 1 b c", "1 1 b a"},
             {"a line that ends early", "BinaryOp add 2 1 g e1 h 0=0", "BinaryOp add 2 1 g"},
             {"a line with an absurd count", "BinaryOp add 2 1", "BinaryOp add 2000000000 1"},
             {"a count that is no number", "BinaryOp add 2 1", "BinaryOp add two 1"},
             {"a stride", "6=72", "3=2 6=72"},
             {"dilation", "6=72", "2=2 6=72"},
             {"an unknown parameter", "6=72", "6=72 18=1"},
             {"padding that shrinks the image", "1=1 4=0", "1=3 4=0"},
             {"padding that grows the image", "4=0", "4=1"},
             {"an even kernel", "1=1 4=0", "1=2 4=1"},
             {"absurd outputs", "0=12 1=1", "0=2147483647 1=1"},
             {"negative outputs", "0=12 1=1", "0=-12 1=1"},
             {"another number of weights", "6=72", "6=71"},
             {"a parameter twice", "6=72", "6=72 6=72"},
             {"a parameter without a value", "6=72", "6"},
             {"a value that is no number", "6=72", "6=7x2"},
             {"an unknown activation", "9=2", "9=3"},
             {"a list that is shorter than it says", "-23310=1,5", "-23310=2,5"},
             {"a slope that is no number", "-23310=1,5.000000e-01", "-23310=1,nan"},
             {"another axis", "Concat cat 2 1 a d1 b 0=0", "Concat cat 2 1 a d1 b 0=1"},
             {"a slope for all channels", "PReLU prelu 1 1 c d 0=12", "PReLU prelu 1 1 c d 0=1"},
             {"another order of channels", "e 0=2\n", "e 0=2 1=1\n"},
             {"a shuffle that doesn't divide", "e 0=2\n", "e 0=5\n"},
             {"a shuffle by zero", "e 0=2\n", "e 0=0\n"},
             {"smooth enlargement", "f 0=1", "f 0=2"},
             {"a broken factor", "1=2.000000e+00", "1=1.500000e+00"},
             {"two different factors", "1=2.000000e+00", "1=4.000000e+00"},
             {"a product", "h 0=0", "h 0=2"},
             {"a product of elements", "g 0=1", "g 0=0"},
             {"a coefficient too few", "-23301=2,2.500000e-01,1.000000e+00", "-23301=1,1.0"},
             {"an infinite coefficient", "2.500000e-01", "inf"},
             {"two outputs", "g e1 h", "g e0 h"},
             {"an activation of a value that others read too", "PReLU prelu 1 1 c d 0=12",
              "Split s 1 1 c c2\nPReLU prelu 1 1 c2 d 0=12"},
             {"an activation of no convolution",
              "PReLU prelu 1 1 c d 0=12\nPixelShuffle shuffle 1 1 d",
              "PReLU prelu 1 1 b d 0=6\nPixelShuffle shuffle 1 1 c"},
         }) {
        const auto contents = param(replaced(kParam, c.from, c.to), paramWeights());
        ASSERT_FALSE(contents) << c.fault;
        EXPECT_EQ(contents.error().code, static_cast<int>(ErrorCode::unsupported)) << c.fault;
        EXPECT_NE(contents.error().localizedDescription.find("net.param"), std::string::npos);
    }
}

TEST_F(ImporterTest, BadWeightsOfATextGraphAreImported) {
    const std::string good = paramWeights();
    ASSERT_TRUE(param(kParam, good));
    for (std::size_t size = 0; size < good.size(); ++size) {
        EXPECT_FALSE(param(kParam, good.substr(0, size))) << "cut to " << size;
    }
    EXPECT_FALSE(param(kParam, good + "more"));
    EXPECT_FALSE(param(kParam, "tag?" + good.substr(4)));
    const auto withNumberAt = [&](std::size_t at, auto number) {
        std::string bad = good;
        std::memcpy(bad.data() + at, &number, sizeof number);
        return bad;
    };
    EXPECT_FALSE(param(kParam, withNumberAt(4, Half{0x7E00}))) << "a weight is no number";
    EXPECT_FALSE(param(kParam, withNumberAt(24, std::numeric_limits<float>::quiet_NaN())))
        << "a bias is no number";
    EXPECT_FALSE(param(kParam, withNumberAt(24, 1e9f))) << "a bias is too large to be stored";
    EXPECT_FALSE(importParam("none.param", "net.bin", options()));
    EXPECT_FALSE(importParam("../net.param", "net.bin", options())) << "outside the package";
}

Json layer(const char* type, const char* name, Json config, std::vector<std::string> inputs) {
    Json calls = Json::array();
    for (const std::string& input : inputs) calls.push_back({input, 0, 0, Json::object()});
    config["name"] = name;
    return {{"class_name", type},
            {"name", name},
            {"config", config},
            {"inbound_nodes", inputs.empty() ? Json::array() : Json::array({calls})}};
}

Json convolutionConfig(int filters, int kernel, const char* activation) {
    return {{"filters", filters},       {"kernel_size", {kernel, kernel}},
            {"strides", {1, 1}},        {"padding", "same"},
            {"dilation_rate", {1, 1}},  {"data_format", "channels_last"},
            {"activation", activation}, {"use_bias", true}};
}

// Every layer that the topology may have. "wide" shifts by one pixel, one channel into the other;
// its kernel is quantised.
Json topology() {
    const Json entries = {
        {{"name", "wide/kernel"},
         {"shape", {3, 3, 3, 3}},
         {"dtype", "float32"},
         {"quantization", {{"dtype", "uint8"}, {"min", -1.0}, {"scale", 0.5}}}},
        {{"name", "wide/bias"}, {"shape", {3}}, {"dtype", "float32"}},
        {{"name", "deep/kernel"}, {"shape", {1, 1, 6, 12}}, {"dtype", "float32"}},
        {{"name", "deep/bias"}, {"shape", {12}}, {"dtype", "float32"}},
    };
    const Json list = {
        layer("InputLayer", "LR", {{"batch_input_shape", {nullptr, nullptr, nullptr, 3}}}, {}),
        layer("Conv2D", "wide", convolutionConfig(3, 3, "linear"), {"LR"}),
        layer("Activation", "wide_relu", {{"activation", "relu"}}, {"wide"}),
        layer("Concatenate", "joined", {{"axis", -1}}, {"LR", "wide_relu"}),
        layer("Conv2D", "deep", convolutionConfig(12, 1, "relu"), {"joined"}),
        layer("PixelShuffle", "shuffled", {{"scale", 2}}, {"deep"}),
        layer("MultiplyBeta", "small", {{"beta", 0.5}}, {"shuffled"}),
        layer("UpSampling2D", "large",
              {{"size", {2, 2}}, {"interpolation", "nearest"}, {"data_format", "channels_last"}},
              {"LR"}),
        layer("Add", "SR", Json::object(), {"large", "small"}),
    };
    return {{"format", "layers-model"},
            {"modelTopology",
             {{"model_config",
               {{"config", {{"layers", list}, {"output_layers", Json::array({{"SR", 0, 0}})}}}}}}},
            {"weightsManifest",
             Json::array({{{"paths", {"shard1", "shard2"}}, {"weights", entries}}})}};
}

std::string layersWeights() {
    std::string wide(81, 2);                // q 2 is 0, q 4 is 1
    wide[(1 * 3 + 0) * 9 + 0 * 3 + 1] = 4;  // left neighbour's red into green
    std::vector<float> deep(72);
    for (int o = 0; o < 12; ++o) deep[(o % 6) * 12 + o] = static_cast<float>(o + 1);
    const auto raw = [](const std::vector<float>& numbers) {
        return std::string(reinterpret_cast<const char*>(numbers.data()), numbers.size() * 4);
    };
    return wide + raw({0, 0, 1}) + raw(deep) + raw(std::vector<float>(12));
}

TEST_F(ImporterTest, ALayeredTopologyMeansSomethingElse) {
    const auto contents = layers(topology(), layersWeights());
    ASSERT_TRUE(contents) << contents.error().localizedDescription;
    // Folded: two convolutions, a concatenation, a shuffle, an enlargement and one sum.
    EXPECT_EQ(contents->graph.operations.size(), 6u);
    const PlanarImage row{3, {2, 1}, {2, 3, 4, 5, -6, -7}};
    const PlanarImage out = evaluate(*contents, row);
    ASSERT_EQ(out.size, (PixelSize{4, 2}));
    for (int x = 0; x < 2; ++x) {
        const float joined[6] = {row.row(0, 0)[x],
                                 row.row(1, 0)[x],
                                 row.row(2, 0)[x],
                                 0,
                                 x == 0 ? 0.0f : row.row(0, 0)[0],
                                 1};
        for (int o = 0; o < 12; ++o) {
            const int c = o % 3;
            const int phase = o / 3;
            const float deep = std::max(0.0f, joined[o % 6] * static_cast<float>(o + 1));
            EXPECT_FLOAT_EQ(out.row(c, phase / 2)[x * 2 + phase % 2],
                            0.5f * deep + row.row(c, 0)[x])
                << o << " at " << x;
        }
    }
}

TEST_F(ImporterTest, ALayeredTopologyThatCanNotBeExpressedIsImported) {
    const std::string layer = "/modelTopology/model_config/config/layers/";
    struct Case {
        const char* fault;
        std::string at;
        Json value;
    };
    for (const Case& c : std::initializer_list<Case>{
             {"another format", "/format", "graph-model"},
             {"no topology", "/modelTopology", nullptr},
             {"no layers", "/modelTopology/model_config/config/layers", Json::array()},
             {"two outputs",
              "/modelTopology/model_config/config/output_layers",
              {{"SR", 0, 0}, {"LR", 0, 0}}},
             {"an output that nobody computes",
              "/modelTopology/model_config/config/output_layers/0/0", "nobody"},
             {"an input of one size", layer + "0/config/batch_input_shape/1", 64},
             {"a grey input", layer + "0/config/batch_input_shape/3", 1},
             {"an unknown layer", layer + "3/class_name", "Dropout"},
             {"a layer without a name", layer + "3/name", nullptr},
             {"a stride", layer + "1/config/strides", {2, 2}},
             {"no padding", layer + "1/config/padding", "valid"},
             {"dilation", layer + "1/config/dilation_rate", {2, 2}},
             {"groups", layer + "1/config/groups", 3},
             {"channels in front", layer + "1/config/data_format", "channels_first"},
             {"an oblong kernel", layer + "1/config/kernel_size", {3, 1}},
             {"a kernel of text", layer + "1/config/kernel_size", {"3", "3"}},
             {"other filters than weights", layer + "1/config/filters", 4},
             {"negative filters", layer + "1/config/filters", -3},
             {"an unknown activation inside", layer + "1/config/activation", "tanh"},
             {"an unknown activation", layer + "2/config/activation", "tanh"},
             {"another axis", layer + "3/config/axis", 1},
             {"an input that comes later", layer + "1/inbound_nodes/0/0/0", "SR"},
             {"another output of a layer", layer + "1/inbound_nodes/0/0/2", 1},
             {"a shuffle that doesn't divide", layer + "5/config/scale", 5},
             {"a shuffle by zero", layer + "5/config/scale", 0},
             {"a factor that is text", layer + "6/config/beta", "0.2"},
             {"smooth enlargement", layer + "7/config/interpolation", "bilinear"},
             {"an oblong enlargement", layer + "7/config/size", {2, 4}},
             {"a sum of different sizes", layer + "8/inbound_nodes/0/0/0", "LR"},
             {"a missing tensor", "/weightsManifest/0/weights/0/name", "other/kernel"},
             {"a tensor twice", "/weightsManifest/0/weights/1/name", "wide/kernel"},
             {"whole numbers", "/weightsManifest/0/weights/1/dtype", "int32"},
             {"16 bits", "/weightsManifest/0/weights/0/quantization/dtype", "uint16"},
             {"a scale that makes weights infinite",
              "/weightsManifest/0/weights/0/quantization/scale", 1e38},
             {"an absurd shape",
              "/weightsManifest/0/weights/0/shape",
              {4294967296u, 4294967296u, 4294967296u, 4294967296u}},
             {"a negative shape", "/weightsManifest/0/weights/1/shape/0", -3},
             {"a shard that is missing", "/weightsManifest/0/paths/0", "shard3"},
             {"a shard outside the package", "/weightsManifest/0/paths/0", "../shard1"},
             {"a shard anywhere", "/weightsManifest/0/paths/0", "/etc/hostname"},
         }) {
        Json model = topology();
        model[Json::json_pointer(c.at)] = c.value;
        EXPECT_FALSE(layers(model, layersWeights())) << c.fault;
    }
}

TEST_F(ImporterTest, BadWeightsOfALayeredTopologyAreImported) {
    const std::string good = layersWeights();
    for (std::size_t size = 0; size < good.size(); size += 3) {
        EXPECT_FALSE(layers(topology(), good.substr(0, size))) << "cut to " << size;
    }
    EXPECT_FALSE(layers(topology(), good + "more"));
    std::string bad = good;
    const float noNumber = std::numeric_limits<float>::quiet_NaN();
    std::memcpy(bad.data() + 81, &noNumber, sizeof noNumber);
    EXPECT_FALSE(layers(topology(), bad));
    writeFile(folder_ / "net.json", "{\"format\": ");
    EXPECT_FALSE(importLayers("net.json", options()));
}

TEST_F(ImporterTest, AMeanIsNotTheMean) {
    std::vector<CompiledModel> models;
    PlanarImage expected;
    const PlanarImage image = Numbers().image(3, {5, 4});
    for (unsigned i = 0; i < 3; ++i) {
        models.push_back(compiled(smallNetwork(i + 1), folder_ / std::to_string(i)));
        const PlanarImage part = *evaluateReference(models.back(), image);
        if (i == 0) expected = PlanarImage::blank(part.channels, part.size);
        for (std::size_t at = 0; at < part.values.size(); ++at) {
            expected.values[at] += part.values[at] / 3;
        }
    }
    const auto mean = composeMean(models, "x_1");
    ASSERT_TRUE(mean) << mean.error().localizedDescription;
    EXPECT_EQ(mean->graph.values.front(), "x_1");
    EXPECT_EQ(mean->graph.provenance.size(), 3u);
    EXPECT_EQ(mean->graph.licence, "MIT");
    EXPECT_LT(largestDifference(evaluate(*mean, image), expected), 1e-5);
}

TEST_F(ImporterTest, NetworksThatHaveNoMeanAreAveraged) {
    RandomGraph larger;
    larger.nearestEnlargement("out", "in", 4);
    RandomGraph brighter(3, 255);
    brighter.nearestEnlargement("out", "in", 2);
    for (const ModelContents& other : {larger.end("out"), brighter.end("out")}) {
        std::vector<CompiledModel> models;
        models.push_back(compiled(smallNetwork(), folder_ / "a"));
        models.push_back(compiled(other, folder_ / "b"));
        EXPECT_FALSE(composeMean(models, "x"));
    }
    EXPECT_FALSE(composeMean({}, "x"));
}

}  // namespace
}  // namespace quillmere::neural
