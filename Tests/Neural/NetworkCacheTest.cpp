// The cache of networks: what it spares, what it forgets, and what it must not mix up.
#include "Neural/Runtime/NetworkCache.h"

#include <gtest/gtest.h>

#include <functional>
#include <latch>
#include <thread>

#include "Neural/Model/NeuralError.h"
#include "Tests/Neural/TestModels.h"

namespace quillmere::neural {
namespace {

namespace fs = std::filesystem;

// `depth` convolutions in a row. Chains of one seed begin with the same tensors.
ModelContents chain(int depth, unsigned seed = 1) {
    RandomGraph graph(3, 1, seed);
    std::string last = "in";
    for (int i = 0; i < depth; ++i) {
        const std::string name = std::to_string(i);
        graph.convolve(name, last, 16, 3);
        last = name;
    }
    return graph.end(last);
}

Convolution lastConvolution(const Graph& graph) {
    Convolution last;
    for (const Operation& operation : graph.operations) {
        if (const auto* found = std::get_if<Convolution>(&operation)) last = *found;
    }
    return last;
}

class NetworkCacheTest : public testing::Test {
protected:
    fs::path write(const std::string& name, const ModelContents& contents) {
        compiled(contents, folder_ / name);
        return folder_ / name;
    }

    // The result of a network that shares nothing with any other.
    std::vector<float> alone(const fs::path& model) {
        return (*Network::load(model, pool_))->evaluate(image_)->values;
    }

    std::vector<float> outputOf(const Network& network) { return network.evaluate(image_)->values; }

    std::size_t bytesOf(const fs::path& model) {
        NetworkCache cache(pool_);
        const auto network = cache.load(model);
        return cache.bytes();
    }

    TemporaryFolder folder_;
    WorkerPool pool_{2};
    NetworkCache cache_{pool_};
    const PlanarImage image_ = Numbers(7).image(3, {6, 5});
};

TEST_F(NetworkCacheTest, ARepeatedLoadPreparesAgain) {
    const fs::path model = write("model", chain(3));
    const Network* first = cache_.load(model)->get();
    EXPECT_EQ(cache_.preparations(), 3u);
    EXPECT_EQ(outputOf(**cache_.load(model)), alone(model));
    fs::create_directory_symlink(model, folder_ / "link");
    EXPECT_EQ(cache_.load(folder_ / "link")->get(), first);
    EXPECT_EQ(cache_.preparations(), 3u);
}

TEST_F(NetworkCacheTest, TensorsOfTwoNetworksAreKeptTwice) {
    const fs::path shallow = write("shallow", chain(2));
    const fs::path deep = write("deep", chain(5));
    ASSERT_TRUE(cache_.load(shallow));
    const auto network = cache_.load(deep);
    ASSERT_TRUE(network);
    EXPECT_EQ(cache_.preparations(), 5u);
    EXPECT_EQ(cache_.bytes(), bytesOf(deep));
    EXPECT_EQ(outputOf(**network), alone(deep));
}

TEST_F(NetworkCacheTest, WeightsPreparedForAnotherUseOfATensorAreTaken) {
    struct Case {
        const char* use;
        std::function<void(RandomGraph&)> build;
        float bias;
    };
    const auto subject = [](RandomGraph& graph) {
        graph.convolve("a", "in", 8, 1);
        graph.convolve("b", "a", 10, 3);
    };
    const auto activated = [&](Activation activation, float slope = 0) {
        return [=](RandomGraph& graph) {
            subject(graph);
            graph.activation("out", "b", activation, slope);
        };
    };
    std::vector<std::shared_ptr<const Network>> kept;
    std::string tensor;
    for (const Case& c : std::initializer_list<Case>{
             {"no activation", activated(Activation::none), 0},
             {"another bias", activated(Activation::none), 1},
             {"ReLU", activated(Activation::relu), 0},
             {"leaky", activated(Activation::leakyRelu, 0.25f), 0},
             {"leakier", activated(Activation::leakyRelu, 0.5f), 0},
             {"slopes",
              [&](RandomGraph& graph) {
                  subject(graph);
                  graph.prelu("out", "b");
              },
              0},
             {"other slopes",
              [&](RandomGraph& graph) {
                  subject(graph);
                  graph.activation("out", "b", Activation::prelu, 0, std::vector<float>(10, 2));
              },
              0},
             {"a factor of a sum",
              [&](RandomGraph& graph) {
                  subject(graph);
                  graph.weightedSum("out", std::vector<std::string>{"b"}, std::vector<float>{3});
              },
              0},
             {"an enlarged input",
              [](RandomGraph& graph) {
                  graph.convolve("a", "in", 8, 1);
                  graph.nearestEnlargement("large", "a", 2);
                  graph.convolve("out", "large", 10, 3);
              },
              0},
             {"an input of other planes",
              [](RandomGraph& graph) {
                  graph.convolve("left", "in", 4, 1);
                  graph.convolve("right", "in", 4, 1);
                  graph.concatenation("a", std::vector<std::string>{"left", "right"});
                  graph.convolve("out", "a", 10, 3);
              },
              0},
         }) {
        RandomGraph graph;
        c.build(graph);
        ModelContents contents = graph.end("out");
        const Convolution op = lastConvolution(contents.graph);
        contents.tensors[op.bias].front() = toHalf(c.bias);
        const fs::path path = folder_ / c.use;
        const CompiledModel model = compiled(contents, path);
        const std::string sum = model.graph().tensors[op.weights].sha256;
        EXPECT_EQ(sum, kept.empty() ? sum : tensor) << c.use << ": the test's own tensors differ";
        tensor = sum;
        kept.push_back(*cache_.load(path));
        EXPECT_EQ(outputOf(*kept.back()), alone(path)) << c.use;
    }
}

TEST_F(NetworkCacheTest, TheNetworkUsedLastIsDroppedOrNoneEver) {
    const fs::path a = write("a", chain(3, 1));
    const fs::path b = write("b", chain(3, 2));
    const fs::path c = write("c", chain(3, 3));
    const std::size_t each = bytesOf(a);
    NetworkCache cache(pool_, 2 * each);
    for (const fs::path& model : {a, b, a, c}) ASSERT_TRUE(cache.load(model));
    EXPECT_EQ(cache.bytes(), 2 * each);
    EXPECT_EQ(cache.preparations(), 9u);
    ASSERT_TRUE(cache.load(a) && cache.load(c));
    EXPECT_EQ(cache.preparations(), 9u) << "b was the one to go";
    EXPECT_EQ(outputOf(**cache.load(b)), alone(b));
    EXPECT_EQ(cache.preparations(), 12u);
}

TEST_F(NetworkCacheTest, ANetworkInUseIsDroppedOrOneOutOfUseKept) {
    const fs::path a = write("a", chain(3, 1));
    const fs::path b = write("b", chain(3, 2));
    const std::size_t each = bytesOf(a);
    NetworkCache cache(pool_, 1);
    auto used = *cache.load(a);
    ASSERT_TRUE(cache.load(b));
    EXPECT_EQ(cache.bytes(), 2 * each);
    EXPECT_EQ(cache.load(a)->get(), used.get());
    used.reset();
    ASSERT_TRUE(cache.load(b));
    EXPECT_EQ(cache.preparations(), 6u) << "the last one stays, although larger than the bound";
    ASSERT_TRUE(cache.load(write("c", chain(3, 3))));
    EXPECT_EQ(cache.bytes(), each);
}

TEST_F(NetworkCacheTest, AReplacedModelIsNotSeenOrChangesRunningNetworks) {
    const fs::path path = write("model", chain(2, 1));
    const std::vector<float> before = alone(path);
    const auto old = *cache_.load(path);
    write("model", chain(2, 2));
    EXPECT_EQ(outputOf(**cache_.load(path)), alone(path));
    EXPECT_NE(alone(path), before);
    EXPECT_EQ(outputOf(*old), before);
    fs::remove_all(path);
    EXPECT_FALSE(cache_.load(path));
    EXPECT_EQ(outputOf(*old), before);
}

TEST_F(NetworkCacheTest, DamagedWeightsAreRememberedOrReachNetworksThatShareThem) {
    const fs::path damaged = write("damaged", chain(2));
    std::string weights = readFile(damaged / "weights.bin");
    weights.back() = static_cast<char>(weights.back() ^ 1);
    writeFile(damaged / "weights.bin", weights);
    for (int attempt = 0; attempt < 2; ++attempt) {
        const auto network = cache_.load(damaged);
        ASSERT_FALSE(network);
        EXPECT_EQ(network.error().code, static_cast<int>(ErrorCode::malformed));
    }
    EXPECT_EQ(cache_.bytes(), 0u);
    const fs::path sound = write("sound", chain(3));
    EXPECT_EQ(outputOf(**cache_.load(sound)), alone(sound));
    write("damaged", chain(2));
    EXPECT_TRUE(cache_.load(damaged));
}

TEST_F(NetworkCacheTest, LoadsAtOncePrepareTwiceOrWaitForEver) {
    const fs::path models[] = {write("a", chain(4, 1)), write("b", chain(4, 2)),
                               write("broken", chain(4, 3))};
    writeFile(models[2] / "graph.json", "{");
    constexpr int kThreads = 9;
    std::shared_ptr<const Network> loaded[kThreads];
    std::latch start(kThreads);
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&, i] {
            start.arrive_and_wait();
            auto network = cache_.load(models[i % 3]);
            if (network) loaded[i] = *network;
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(cache_.preparations(), 8u);
    for (int i = 0; i < kThreads; ++i) EXPECT_EQ(loaded[i], loaded[i % 3]);
    EXPECT_TRUE(loaded[0] && loaded[1] && loaded[0] != loaded[1] && !loaded[2]);
}

}  // namespace
}  // namespace quillmere::neural
