// The public face of the runtime: pictures in and out, errors, threads.
#include "Neural/Runtime/Network.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <thread>

#include "Neural/Model/NeuralError.h"
#include "Neural/Runtime/ExecutionPlan.h"
#include "Tests/Neural/TestModels.h"

namespace quillmere::neural {
namespace {

constexpr auto kWrongSize = static_cast<int>(ErrorCode::wrongSize);

// One value for each channel, in and out, times `factor`.
ModelContents channelwise(float factor, int range) {
    RandomGraph graph(3, range);
    graph.weightedSum("out", std::vector<std::string>{"in"}, std::vector<float>{factor});
    return graph.end("out");
}

class NetworkTest : public testing::Test {
protected:
    std::shared_ptr<const Network> load(const ModelContents& contents) {
        const std::string name = "model" + std::to_string(++models_);
        compiled(contents, folder_ / name);
        auto network = Network::load(folder_ / name, pool_);
        return network ? *network : nullptr;
    }

    TemporaryFolder folder_;
    WorkerPool pool_{3};
    int models_ = 0;
};

TEST_F(NetworkTest, APixelIsRoundedClampedOrScaledWrongly) {
    struct Case {
        const char* fault;
        float factor;
        int range;
        std::uint8_t in;
        std::uint8_t out;
    };
    for (const Case& c : std::initializer_list<Case>{
             {"white becomes grey", 1, 1, 255, 255},
             {"black becomes grey", 1, 1, 0, 0},
             {"a middle value drifts", 1, 1, 127, 127},
             {"the other range is not scaled", 1, 255, 127, 127},
             {"a half is rounded down", 0.5f, 255, 5, 3},
             {"less than a half is rounded up", 0.25f, 255, 5, 1},
             {"too bright wraps around", 2, 1, 200, 255},
             {"below black wraps around", -1, 255, 9, 0},
             {"infinity is not clamped", 3e38f, 255, 9, 255},
         }) {
        const auto network = load(channelwise(c.factor, c.range));
        ASSERT_NE(network, nullptr);
        const std::vector<std::uint8_t> in{c.in, c.in, c.in, 17};
        std::vector<std::uint8_t> out(4);
        ASSERT_TRUE(network->run({in.data(), 4, {1, 1}}, {out.data(), 4, {1, 1}}));
        EXPECT_EQ(out, (std::vector<std::uint8_t>{c.out, c.out, c.out, 255})) << c.fault;
    }
}

TEST_F(NetworkTest, ChannelsAreSwappedOrRowsTakenWithoutTheirPadding) {
    const auto network = load(channelwise(1, 1));
    const std::vector<std::uint8_t> in{1, 2, 3, 0, 99, 99, 4, 5, 6, 0, 99, 99};
    std::vector<std::uint8_t> out(16, 77);
    ASSERT_TRUE(network->run({in.data(), 6, {1, 2}}, {out.data(), 8, {1, 2}}));
    EXPECT_EQ(out, (std::vector<std::uint8_t>{1, 2, 3, 255, 77, 77, 77, 77,  //
                                              4, 5, 6, 255, 77, 77, 77, 77}));
}

TEST_F(NetworkTest, AnImageThatDoesNotFitIsRunAllTheSame) {
    const auto network = load(smallNetwork());
    ASSERT_EQ(network->scale(), 2);
    EXPECT_EQ(network->inputName(), "in");
    const std::vector<std::uint8_t> in(64);
    std::vector<std::uint8_t> out(256, 77);
    struct Case {
        const char* fault;
        ImageView in;
        MutableImageView out;
    };
    for (const Case& c : std::initializer_list<Case>{
             {"empty", {in.data(), 16, {0, 4}}, {out.data(), 32, {0, 8}}},
             {"negative", {in.data(), 16, {4, -4}}, {out.data(), 32, {8, -8}}},
             {"not twice as wide", {in.data(), 16, {4, 4}}, {out.data(), 32, {4, 8}}},
             {"not twice as high", {in.data(), 16, {4, 4}}, {out.data(), 32, {8, 7}}},
             {"short rows in", {in.data(), 15, {4, 4}}, {out.data(), 32, {8, 8}}},
             {"short rows out", {in.data(), 16, {4, 4}}, {out.data(), 31, {8, 8}}},
             {"no pixels in", {nullptr, 16, {4, 4}}, {out.data(), 32, {8, 8}}},
             {"no pixels out", {in.data(), 16, {4, 4}}, {nullptr, 32, {8, 8}}},
             {"absurdly wide",
              {in.data(), 1 << 30, {1 << 28, 1}},
              {out.data(), std::size_t{1} << 31, {1 << 29, 2}}},
         }) {
        const auto ran = network->run(c.in, c.out);
        ASSERT_FALSE(ran) << c.fault;
        EXPECT_EQ(ran.error().domain, kErrorDomain);
        EXPECT_EQ(ran.error().code, kWrongSize) << c.fault;
    }
    EXPECT_EQ(std::count(out.begin(), out.end(), 77), 256) << "something was written";
    EXPECT_FALSE(network->evaluate(PlanarImage::blank(4, {2, 2})));
    EXPECT_FALSE(network->evaluate({3, {2, 2}, {1, 2, 3}}));
}

TEST_F(NetworkTest, ANetworkThatMakesNoColoursIsRunOnAPicture) {
    RandomGraph graph;
    graph.convolve("out", "in", 4, 1);
    const auto network = load(graph.end("out"));
    const std::vector<std::uint8_t> in(4);
    std::vector<std::uint8_t> out(4);
    const auto ran = network->run({in.data(), 4, {1, 1}}, {out.data(), 4, {1, 1}});
    ASSERT_FALSE(ran);
    EXPECT_EQ(ran.error().code, kWrongSize);
}

TEST_F(NetworkTest, RunsAtOnceDisturbEachOther) {
    const auto network = load(smallNetwork());
    Numbers numbers;
    const PlanarImage images[2] = {numbers.image(3, {20, 11}), numbers.image(3, {9, 30})};
    const PlanarImage alone[2] = {*network->evaluate(images[0]), *network->evaluate(images[1])};
    double differences[2] = {0, 0};
    const auto repeat = [&](int i) {
        for (int n = 0; n < 20; ++n) {
            const auto result = network->evaluate(images[i]);
            differences[i] =
                std::max(differences[i], result ? largestDifference(*result, alone[i]) : 1e9);
        }
    };
    std::thread other(repeat, 1);
    repeat(0);
    other.join();
    EXPECT_EQ(differences[0], 0);
    EXPECT_EQ(differences[1], 0);
}

TEST_F(NetworkTest, TheNumberOfThreadsChangesTheResult) {
    compiled(smallNetwork(), folder_ / "model");
    WorkerPool one(1);
    WorkerPool four(4);
    const auto a = Network::load(folder_ / "model", one);
    const auto b = Network::load(folder_ / "model", four);
    ASSERT_TRUE(a && b);
    const PlanarImage image = Numbers().image(3, {17, 13});
    EXPECT_EQ((*a)->evaluate(image)->values, (*b)->evaluate(image)->values);
}

TEST(ExecutionPlan, APlaneIsOverwrittenWhileItIsStillNeededOrItsMemoryKeptForEver) {
    RandomGraph builder;
    builder.convolve("0", "in", 16, 3);
    std::string last = "0";
    for (int i = 1; i <= 6; ++i) {
        const std::string name = std::to_string(i);
        builder.convolve(name, last, 16, 3);
        builder.concatenation("joined " + name, std::vector<std::string>{"0", name});
        last = "joined " + name;
    }
    builder.depthToSpace("out", last, 2, DepthOrder::channelFirst);
    const Graph graph = builder.end("out").graph;
    const Schedule schedule = Schedule::of(graph, *inferShapes(graph));
    const ExecutionPlan plan = ExecutionPlan::of(schedule);

    std::map<SlotId, ValueId> content;  // of the slots in use
    const auto write = [&](ValueId value) {
        for (const PlannedPlane& plane : plan.values[value]) content[plane.slot] = value;
    };
    write(0);
    for (std::size_t n = 0; n < plan.stages.size(); ++n) {
        for (std::size_t s = plan.stages[n].first; s < plan.stages[n].end; ++s) {
            for (const RowNeed& need : schedule.rowNeeds(schedule.steps[s])) {
                for (const PlannedPlane& plane : plan.values[need.value]) {
                    ASSERT_TRUE(content.contains(plane.slot)) << "given back before its last use";
                    EXPECT_EQ(content[plane.slot], need.value) << "another value took its place";
                }
            }
            write(schedule.steps[s].output);
        }
        for (const SlotId slot : plan.retired[n]) EXPECT_EQ(content.erase(slot), 1u);
    }
    EXPECT_TRUE(content.empty());
    // Two planes each of the first value, of the one that is read and of the one that is written;
    // the input's; and the output's at twice the size.
    EXPECT_LE(plan.slots, 2u * 3 + 1 + 1);
}

TEST(Schedule, WhatCouldBeOnePassOverMemoryTakesSeveral) {
    RandomGraph builder;
    builder.convolve("first", "in", 16, 3);
    builder.convolve("second", "first", 16, 3);
    builder.weightedSum("inner", std::vector<std::string>{"first", "second"},
                        std::vector<float>{1, 0.5f});
    builder.weightedSum("outer", std::vector<std::string>{"first", "inner"},
                        std::vector<float>{1, 0.5f});
    builder.nearestEnlargement("large", "outer", 2);
    builder.convolve("third", "large", 8, 3);
    builder.convolve("fourth", "third", 8, 3);
    // A second reader: this sum must not take the convolution for itself alone.
    builder.weightedSum("out", std::vector<std::string>{"third", "fourth", "third"},
                        std::vector<float>{1, -1, 1});
    const Graph graph = builder.end("out").graph;
    const Schedule schedule = Schedule::of(graph, *inferShapes(graph));

    ASSERT_EQ(schedule.steps.size(), 5u);
    const auto& fused = std::get<FusedConvolution>(schedule.steps[1].work);
    EXPECT_EQ(fused.scale, 0.25f);
    ASSERT_EQ(fused.addends.size(), 2u);
    EXPECT_EQ(fused.addends[0].factor + fused.addends[1].factor, 1.5f);
    EXPECT_EQ(std::get<FusedConvolution>(schedule.steps[2].work).enlargement, 2);
    EXPECT_TRUE(std::holds_alternative<WeightedSum>(schedule.steps[4].work));
}

}  // namespace
}  // namespace quillmere::neural
