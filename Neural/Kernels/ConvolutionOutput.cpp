#include "Neural/Kernels/ConvolutionOutput.h"

#include <algorithm>

namespace quillmere::neural {
namespace {

// The planes of outputs 16 * group and up. With a shuffle, the planes of each phase follow those
// of the phase before.
PlanePair pairOf(const PlaneList& list, std::size_t group, std::size_t planes, int shuffle) {
    const std::size_t perPhase = list.planes.size();
    const auto plane = [&](std::size_t index) {
        const std::size_t phase = index / perPhase;
        const std::size_t dx = phase % shuffle, dy = phase / shuffle;
        return list.planes[index % perPhase].pixels + dy * list.geometry.pitch + dx * kLanes;
    };
    const std::size_t first = 2 * group;
    return {plane(first), plane(std::min(first + 1, planes - 1))};
}

}  // namespace

ConvolutionOutput ConvolutionOutput::of(const ConvolutionCall& call) {
    ConvolutionOutput output;
    output.rowStride = static_cast<std::ptrdiff_t>(call.output.geometry.pitch) * call.shuffle;
    output.pixelStride = std::ptrdiff_t{kLanes} * call.shuffle;
    const std::size_t planes = call.output.planes.size() * call.shuffle * call.shuffle;
    for (std::size_t group = 0; 2 * group < planes; ++group) {
        OutputGroup& made = output.groups.emplace_back();
        made.to = pairOf(call.output, group, planes, call.shuffle);
        for (const Addend& addend : call.addends) {
            made.addends.push_back(
                {pairOf(addend.planes, group, planes, call.shuffle), addend.factor});
        }
        made.bias = call.weights.bias.data() + group * kGroupOutputs;
        made.slopes = call.weights.slopes.data() + group * kGroupOutputs;
    }
    return output;
}

}  // namespace quillmere::neural
