// The seven networks, compared with two evaluations that share no code with the runtime: pictures
// computed by Tests/Golden/make_golden.py, and the reference evaluator.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <iostream>
#include <limits>
#include <ostream>

#include "Neural/Reference/ReferenceNetwork.h"
#include "Neural/Runtime/Network.h"
#include "Tests/Neural/WebPImage.h"

namespace quillmere::neural {
namespace {

constexpr double kLeastPsnr = 60;
constexpr int kChannels = 3;

struct Case {
    const char* resource;
    const char* inputName;

    friend std::ostream& operator<<(std::ostream& out, const Case& c) { return out << c.resource; }
};

std::filesystem::path modelOf(const Case& network) {
    return std::filesystem::path(QUILLMERE_MODELS_DIR) /
           (std::string(network.resource) + ".mlmodelc");
}

std::filesystem::path goldenOf(const std::string& name) {
    return std::filesystem::path(QUILLMERE_SOURCE_DIR) / "Tests/Golden" / (name + ".webp");
}

double psnr(double squares, std::size_t count, double peak) {
    if (squares == 0) return std::numeric_limits<double>::infinity();
    return 10 * std::log10(peak * peak * static_cast<double>(count) / squares);
}

WorkerPool& pool() {
    static WorkerPool shared;
    return shared;
}

class GoldenTest : public testing::TestWithParam<Case> {
protected:
    void SetUp() override {
        ASSERT_TRUE(std::filesystem::exists(modelOf(GetParam())))
            << "The compiled network " << modelOf(GetParam())
            << " is missing: make it with scripts/fetch-networks, as the set-up does.";
        auto loaded = Network::load(modelOf(GetParam()), pool());
        ASSERT_TRUE(loaded) << loaded.error().localizedDescription;
        network_ = *loaded;
        tile_ = WebPImage::read(goldenOf("tile"));
        ASSERT_EQ(tile_.size, (PixelSize{256, 256})) << "the tile can't be read";
    }

    std::shared_ptr<const Network> network_;
    WebPImage tile_;
};

TEST_P(GoldenTest, ANetworkDrawsAnotherPictureThanItsPublishedWeights) {
    const WebPImage golden = WebPImage::read(goldenOf(GetParam().resource));
    ASSERT_EQ(golden.size, (PixelSize{1024, 1024})) << "the golden picture can't be read";
    EXPECT_EQ(network_->inputName(), GetParam().inputName);
    ASSERT_EQ(network_->scale(), 4);

    std::vector<std::uint8_t> pixels(golden.pixels.size());
    const auto ran = network_->run({tile_.pixels.data(), 256 * 4, tile_.size},
                                   {pixels.data(), 1024 * 4, golden.size});
    ASSERT_TRUE(ran) << ran.error().localizedDescription;

    double squares = 0;
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        if (i % 4 == kChannels) continue;
        const double difference = int{pixels[i]} - int{golden.pixels[i]};
        squares += difference * difference;
    }
    const double figure = psnr(squares, pixels.size() / 4 * kChannels, 255);
    std::cout << GetParam().resource << " against the golden tile: " << figure << " dB\n";
    EXPECT_GE(figure, kLeastPsnr);
}

TEST_P(GoldenTest, ANetworkLeavesItsReferenceTwin) {
    constexpr int kSide = 32;
    constexpr int kLeft = 96;  // around the cat's eye
    constexpr int kTop = 80;
    const auto model = CompiledModel::open(modelOf(GetParam()));
    ASSERT_TRUE(model);
    const auto range = static_cast<float>(model->graph().range);
    auto input = PlanarImage::blank(kChannels, {kSide, kSide});
    for (int c = 0; c < kChannels; ++c) {
        for (int y = 0; y < kSide; ++y) {
            for (int x = 0; x < kSide; ++x) {
                const std::uint8_t byte = tile_.pixels[((y + kTop) * 256 + x + kLeft) * 4 + c];
                input.row(c, y)[x] = static_cast<float>(byte) * range / 255;
            }
        }
    }
    const auto ours = network_->evaluate(input);
    const auto twin = evaluateReference(*model, input);
    ASSERT_TRUE(ours && twin);
    ASSERT_EQ(ours->values.size(), twin->values.size());
    double squares = 0;
    for (std::size_t i = 0; i < ours->values.size(); ++i) {
        const double difference = double{ours->values[i]} - twin->values[i];
        squares += difference * difference;
    }
    const double figure = psnr(squares, ours->values.size(), range);
    std::cout << GetParam().resource << " against its twin: " << figure << " dB\n";
    EXPECT_GE(figure, kLeastPsnr);
}

INSTANTIATE_TEST_SUITE_P(Networks, GoldenTest,
                         testing::Values(Case{"bsrgan8", "input"}, Case{"real8", "input"},
                                         Case{"aesrgan8_single", "input"},
                                         Case{"MMRealSRGAN_8", "x_1"},
                                         Case{"real256_general_8", "input"},
                                         Case{"real256_anime_8", "input"},
                                         Case{"fast-srgan", "input_3"}),
                         [](const auto& network) {
                             std::string name = network.param.resource;
                             std::erase_if(name, [](char c) { return c == '-' || c == '_'; });
                             return name;
                         });

}  // namespace
}  // namespace quillmere::neural
