// Every kernel against its slow twin, on every instruction set that this processor has.
#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <functional>
#include <ostream>

#include "Neural/Reference/ReferenceNetwork.h"
#include "Neural/Runtime/Network.h"
#include "Tests/Neural/TestModels.h"

namespace quillmere::neural {
namespace {

using Names = std::vector<std::string>;

struct Case {
    const char* name;
    int inputChannels;
    std::function<void(RandomGraph&)> build;  // ends with a value "out"

    friend std::ostream& operator<<(std::ostream& out, const Case& c) { return out << c.name; }
};

void leaky(RandomGraph& graph, const std::string& name, const std::string& input, int outputs,
           int kernel) {
    graph.convolve(name + " linear", input, outputs, kernel);
    graph.activation(name, name + " linear", Activation::leakyRelu, 0.2f);
}

const std::vector<Case> kCases{
    {"Kernel1", 8, [](RandomGraph& g) { g.convolve("out", "in", 16, 1); }},
    {"Kernel3", 8, [](RandomGraph& g) { g.convolve("out", "in", 16, 3); }},
    {"Kernel5", 8, [](RandomGraph& g) { g.convolve("out", "in", 16, 5); }},
    {"OneChannelToOne", 1, [](RandomGraph& g) { g.convolve("out", "in", 1, 3); }},
    {"ChannelsThatFillNoPlane", 13, [](RandomGraph& g) { g.convolve("out", "in", 19, 3); }},
    {"OutputsOfThreePlanes", 3, [](RandomGraph& g) { g.convolve("out", "in", 24, 3); }},
    {"Winograd", 16, [](RandomGraph& g) { g.convolve("out", "in", 32, 3); }},
    {"WinogradOfOddPlanesToOddGroups", 20, [](RandomGraph& g) { g.convolve("out", "in", 52, 3); }},
    {"WinogradOfKernel5", 24, [](RandomGraph& g) { g.convolve("out", "in", 17, 5); }},
    {"Relu", 4,
     [](RandomGraph& g) {
         g.convolve("conv", "in", 9, 3);
         g.activation("out", "conv", Activation::relu);
     }},
    {"LeakyRelu", 4, [](RandomGraph& g) { leaky(g, "out", "in", 9, 3); }},
    {"SlopePerChannel", 4,
     [](RandomGraph& g) {
         g.convolve("conv", "in", 19, 3);
         g.prelu("out", "conv");
     }},
    {"ConvolutionOfPartlyFilledPlanes", 5,
     [](RandomGraph& g) {
         g.convolve("a", "in", 4, 3);
         g.concatenation("joined", Names{"in", "a", "in"});
         g.convolve("out", "joined", 10, 3);
     }},
    {"SumOfDifferentLayouts", 4,
     [](RandomGraph& g) {
         g.convolve("a", "in", 4, 1);
         g.concatenation("joined", Names{"in", "a"});
         g.convolve("b", "joined", 8, 1);
         g.weightedSum("out", Names{"joined", "b", "joined"}, std::vector<float>{1, -0.5f, 0.2f});
     }},
    {"ChannelFirstShuffle", 18,
     [](RandomGraph& g) { g.depthToSpace("out", "in", 3, DepthOrder::channelFirst); }},
    {"PhaseFirstShuffle", 18,
     [](RandomGraph& g) { g.depthToSpace("out", "in", 3, DepthOrder::phaseFirst); }},
    {"NearestOfPartlyFilledPlanes", 3,
     [](RandomGraph& g) {
         g.concatenation("joined", Names{"in", "in", "in"});
         g.nearestEnlargement("out", "joined", 3);
     }},
    {"ConvolutionAfterEnlargement", 3,
     [](RandomGraph& g) {
         g.nearestEnlargement("large", "in", 2);
         g.convolve("out", "large", 3, 5);
     }},
    {"ResidualsOfResiduals", 12,
     [](RandomGraph& g) {
         g.convolve("a", "in", 24, 3);
         g.convolve("b", "a", 24, 3);
         g.weightedSum("inner", Names{"a", "b"}, std::vector<float>{1, 0.2f});
         g.convolve("c", "inner", 24, 1);
         g.weightedSum("out", Names{"c", "a", "inner"}, std::vector<float>{0.2f, 1, -0.5f});
     }},
    {"OutputOfSeveralPlanes", 4,
     [](RandomGraph& g) {
         g.convolve("a", "in", 4, 3);
         g.concatenation("out", Names{"a", "in"});
     }},
    // More rows than a band has.
    {"EnlargementsInBands", 3,
     [](RandomGraph& g) {
         g.convolve("a", "in", 16, 3);
         g.nearestEnlargement("a2", "a", 2);
         leaky(g, "b", "a2", 16, 3);
         g.nearestEnlargement("b2", "b", 2);
         leaky(g, "c", "b2", 24, 3);
         g.convolve("d", "c", 24, 5);
         g.weightedSum("sum", Names{"c", "d"}, std::vector<float>{1, 0.5f});
         g.convolve("out", "sum", 3, 3);
     }},
    {"ShuffleAndEnlargementInBands", 3,
     [](RandomGraph& g) {
         g.convolve("a", "in", 48, 3);
         g.depthToSpace("b", "a", 4, DepthOrder::channelFirst);
         g.nearestEnlargement("c", "in", 4);
         g.weightedSum("out", Names{"b", "c"}, std::vector<float>{1, 1});
     }},
    {"MeanOfLargeValuesOfSeveralStages", 3,
     [](RandomGraph& g) {
         g.convolve("a", "in", 12, 3);
         g.depthToSpace("a2", "a", 2, DepthOrder::phaseFirst);
         g.convolve("a3", "a2", 3, 3);
         g.convolve("b", "in", 16, 3);
         g.nearestEnlargement("b2", "b", 2);
         g.convolve("b3", "b2", 3, 3);
         g.weightedSum("out", Names{"a3", "b3"}, std::vector<float>{0.5f, 0.5f});
     }},
    // A dense block: the planes of a value live in several others.
    {"ReusedMemoryOfADenseBlock", 3,
     [](RandomGraph& g) {
         g.convolve("0", "in", 12, 3);
         Names joined{"0"};
         for (int i = 1; i <= 5; ++i) {
             const std::string name = std::to_string(i);
             g.concatenation("joined " + name, joined);
             g.convolve(name, "joined " + name, 12, 3);
             joined.push_back(name);
         }
         g.weightedSum("out", Names{"5", "0"}, std::vector<float>{0.2f, 1});
     }},
};

// Sides around the kernels' block of pixels, the row pitch's exception (a power of two with its
// halo), and images of one row or column.
const std::vector<PixelSize> kSizes{{1, 1}, {1, 9},  {9, 1},  {2, 3}, {6, 4},
                                    {7, 5}, {25, 3}, {62, 2}, {5, 45}};

class KernelTest : public testing::TestWithParam<Case> {
protected:
    ~KernelTest() override { hwy::SetSupportedTargetsForTest(0); }

    WorkerPool pool_{3};
    TemporaryFolder folder_;
};

TEST_P(KernelTest, AnOptimisedKernelComputesSomethingElseThanItsTwin) {
    RandomGraph graph(GetParam().inputChannels);
    GetParam().build(graph);
    const CompiledModel model = compiled(graph.end("out"), folder_ / "model");
    const auto network = Network::load(folder_ / "model", pool_);
    ASSERT_TRUE(network) << network.error().localizedDescription;

    const std::vector<std::int64_t> targets = hwy::SupportedAndGeneratedTargets();
    ASSERT_FALSE(targets.empty());
    Numbers numbers(7);
    for (const PixelSize size : kSizes) {
        const PlanarImage input = numbers.image(GetParam().inputChannels, size);
        const auto twin = evaluateReference(model, input);
        ASSERT_TRUE(twin);
        for (const std::int64_t target : targets) {
            hwy::SetSupportedTargetsForTest(target);
            hwy::GetChosenTarget().DeInit();
            const auto ours = (*network)->evaluate(input);
            ASSERT_TRUE(ours) << ours.error().localizedDescription;
            EXPECT_LT(largestDifference(*ours, *twin), 2e-5)
                << hwy::TargetName(target) << ", " << size.width << " by " << size.height;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Operations, KernelTest, testing::ValuesIn(kCases),
                         [](const auto& kernel) { return kernel.param.name; });

}  // namespace
}  // namespace quillmere::neural
