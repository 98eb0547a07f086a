#include "Tests/Neural/TestModels.h"

#include <stdlib.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iostream>
#include <iterator>
#include <limits>

namespace quillmere::neural {

TemporaryFolder::TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "neural.XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) std::abort();
    path_ = name;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string readFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void writeFile(const std::filesystem::path& path, const std::string& bytes) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
}

std::vector<float> Numbers::many(std::size_t count) {
    std::vector<float> values(count);
    std::generate(values.begin(), values.end(), [this] { return next(); });
    return values;
}

PlanarImage Numbers::image(int channels, PixelSize size) {
    auto image = PlanarImage::blank(channels, size);
    image.values = many(image.values.size());
    return image;
}

void RandomGraph::convolve(const std::string& name, const std::string& input, int outputs,
                           int kernel) {
    const int sums = channelsOf(input) * kernel * kernel;
    std::vector<float> weights = numbers_.many(static_cast<std::size_t>(sums) * outputs);
    // Keeps activations near 1, however deep the network.
    for (float& weight : weights) weight *= std::sqrt(3.0f / static_cast<float>(sums));
    convolution(name, input, kernel, halves(weights), numbers_.many(outputs));
}

void RandomGraph::prelu(const std::string& name, const std::string& input) {
    activation(name, input, Activation::prelu, 0, numbers_.many(channelsOf(input)));
}

ModelContents RandomGraph::end(const std::string& output) {
    return finish(output, {"a package", "1.0", "sha512-none", "MIT", {{"a file", "none"}}});
}

ModelContents smallNetwork(unsigned seed) {
    RandomGraph graph(3, 1, seed);
    graph.convolve("first", "in", 10, 3);
    graph.prelu("bent", "first");
    graph.convolve("narrow", "bent", 4, 1);
    graph.activation("leaky", "narrow", Activation::leakyRelu, 0.25f);
    graph.concatenation("both", std::vector<std::string>{"bent", "leaky"});
    graph.convolve("last", "both", 12, 5);
    graph.depthToSpace("shuffled", "last", 2, DepthOrder::channelFirst);
    graph.nearestEnlargement("enlarged", "in", 2);
    graph.weightedSum("sum", std::vector<std::string>{"shuffled", "enlarged"},
                      std::vector<float>{0.25f, 0.5f});
    return graph.end("sum");
}

CompiledModel compiled(const ModelContents& contents, const std::filesystem::path& directory) {
    const auto written = writeModel(contents.graph, contents.tensors, directory);
    if (!written) std::cerr << written.error().localizedDescription << "\n";
    auto model = CompiledModel::open(directory);
    if (!model) std::cerr << model.error().localizedDescription << "\n";
    return std::move(*model);
}

double largestDifference(const PlanarImage& a, const PlanarImage& b) {
    if (a.channels != b.channels || a.size != b.size || a.values.size() != b.values.size()) {
        return std::numeric_limits<double>::infinity();
    }
    double largest = 0;
    for (std::size_t i = 0; i < a.values.size(); ++i) {
        largest = std::max(largest, std::abs(double{a.values[i]} - b.values[i]));
    }
    return largest;
}

}  // namespace quillmere::neural
