#include "Neural/Kernels/Convolution.h"

namespace quillmere::neural {

ConvolutionWeights ConvolutionWeights::arrange(int kernel, std::span<const int> inputChannels,
                                               std::span<const float> weights,
                                               std::span<const float> bias,
                                               std::span<const float> slopes) {
    ConvolutionWeights result;
    result.kernel = kernel;
    result.outputs = static_cast<int>(bias.size());
    result.inputChannels.assign(inputChannels.begin(), inputChannels.end());

    const std::size_t outputs = bias.size();
    const std::size_t planes = (outputs + kLanes - 1) / kLanes;
    const std::size_t taps = static_cast<std::size_t>(kernel) * kernel;
    std::size_t inputs = 0;
    for (const int channels : inputChannels) inputs += channels;

    result.bias.assign(bias.begin(), bias.end());
    result.bias.resize(planes * kLanes);
    result.slopes.assign(slopes.begin(), slopes.end());
    result.slopes.resize(planes * kLanes);
    result.weights.reserve(planes * kLanes * inputs * taps);
    for (std::size_t first = 0; first < planes; first += 2) {
        const std::size_t begin = first * kLanes;
        const std::size_t end = std::min(first + 2, planes) * kLanes;
        std::size_t planeInput = 0;
        for (const int channels : inputChannels) {
            for (std::size_t tap = 0; tap < taps; ++tap) {
                for (std::size_t in = planeInput; in < planeInput + channels; ++in) {
                    for (std::size_t out = begin; out < end; ++out) {
                        result.weights.push_back(
                            out < outputs ? weights[(out * inputs + in) * taps + tap] : 0.0f);
                    }
                }
            }
            planeInput += channels;
        }
    }
    return result;
}

}  // namespace quillmere::neural
