#include <algorithm>

#include "Neural/Kernels/Convolution.h"
#include "Neural/Kernels/DirectConvolution.h"
#include "Neural/Kernels/NarrowConvolution.h"
#include "Neural/Kernels/WinogradConvolution.h"

namespace quillmere::neural {
namespace {

// Below these the transforms cost more than the products that they save.
constexpr int kLeastWinogradChannels = 16;

ConvolutionAlgorithm algorithmFor(int kernel, int inputs, int outputs) {
    if (outputs <= kMostNarrowOutputs) return ConvolutionAlgorithm::narrow;
    if (kernel >= 3 && inputs >= kLeastWinogradChannels && outputs >= kLeastWinogradChannels) {
        return ConvolutionAlgorithm::winograd;
    }
    return ConvolutionAlgorithm::direct;
}

AlignedFloats padded(std::span<const float> values) {
    AlignedFloats result(values.begin(), values.end());
    result.resize((values.size() + kGroupOutputs - 1) / kGroupOutputs * kGroupOutputs);
    return result;
}

}  // namespace

ConvolutionWeights ConvolutionWeights::arrange(int kernel, std::span<const int> inputChannels,
                                               std::span<const float> weights,
                                               std::span<const float> bias,
                                               std::span<const float> slopes) {
    ConvolutionWeights result;
    result.kernel = kernel;
    result.outputs = static_cast<int>(bias.size());
    result.inputChannels.assign(inputChannels.begin(), inputChannels.end());
    result.bias = padded(bias);
    result.slopes = padded(slopes);

    int inputs = 0;
    for (const int channels : inputChannels) inputs += channels;
    result.algorithm = algorithmFor(kernel, inputs, result.outputs);
    switch (result.algorithm) {
        case ConvolutionAlgorithm::direct:
            arrangeDirect(weights, result);
            break;
        case ConvolutionAlgorithm::narrow:
            arrangeNarrow(weights, result);
            break;
        case ConvolutionAlgorithm::winograd:
            arrangeWinograd(weights, result);
            break;
    }
    return result;
}

std::vector<float> foldEnlargement(int factor, std::size_t outputs,
                                   std::span<const float> weights) {
    constexpr std::size_t kTaps = 9;
    std::vector<float> folded(weights.size() * factor * factor);
    const std::size_t inputs = weights.size() / outputs / kTaps;
    float* to = folded.data();
    for (int dy = 0; dy < factor; ++dy) {
        for (int dx = 0; dx < factor; ++dx) {
            for (std::size_t i = 0; i < outputs * inputs; ++i, to += kTaps) {
                for (int tap = 0; tap < static_cast<int>(kTaps); ++tap) {
                    // The small image's pixel that the large one's lies in, from -1 to 1.
                    const int y = (dy + tap / 3 - 1 + factor) / factor - 1;
                    const int x = (dx + tap % 3 - 1 + factor) / factor - 1;
                    to[(y + 1) * 3 + x + 1] += weights[i * kTaps + tap];
                }
            }
        }
    }
    return folded;
}

}  // namespace quillmere::neural
