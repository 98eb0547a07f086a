#include "Neural/Runtime/PreparedWeights.h"

#include <algorithm>
#include <atomic>
#include <new>

namespace quillmere::neural {
namespace {

std::vector<float> floats(std::span<const Half> halves) {
    std::vector<float> values(halves.size());
    std::transform(halves.begin(), halves.end(), values.begin(), toFloat);
    return values;
}

std::vector<float> slopesOf(const Convolution& op, const CompiledModel& model) {
    switch (op.activation) {
        case Activation::none:
            return std::vector<float>(op.outputs, 1.0f);
        case Activation::relu:
            return std::vector<float>(op.outputs, 0.0f);
        case Activation::leakyRelu:
            return std::vector<float>(op.outputs, op.slope);
        case Activation::prelu:
            return floats(model.tensor(op.slopes));
    }
    invariantBroken();
}

void scale(std::vector<float>& values, float factor) {
    for (float& value : values) value *= factor;
}

// Each value as often as there are pixels in a square of `side`.
std::vector<float> repeated(const std::vector<float>& values, int side) {
    std::vector<float> result;
    for (int i = 0; i < side * side; ++i) result.insert(result.end(), values.begin(), values.end());
    return result;
}

ConvolutionWeights prepare(const FusedConvolution& work, const CompiledModel& model,
                           std::span<const PlannedPlane> inputPlanes) {
    const Convolution& convolution = work.convolution;
    std::vector<int> inputChannels;
    for (const PlannedPlane& plane : inputPlanes) inputChannels.push_back(plane.channels);
    std::vector<float> weights = floats(model.tensor(convolution.weights));
    std::vector<float> bias = floats(model.tensor(convolution.bias));
    scale(weights, work.scale);
    scale(bias, work.scale);
    if (work.enlargement != 1) {
        weights = foldEnlargement(work.enlargement, bias.size(), weights);
        bias = repeated(bias, work.enlargement);
    }
    const std::vector<float> slopes = repeated(slopesOf(convolution, model), work.enlargement);
    return ConvolutionWeights::arrange(convolution.kernel, inputChannels, weights, bias, slopes);
}

}  // namespace

PreparedWeights PreparedWeights::of(const CompiledModel& model, const Schedule& schedule,
                                    const ExecutionPlan& plan, WorkerPool& pool) {
    PreparedWeights prepared;
    prepared.byStep_.resize(schedule.steps.size());
    std::atomic<bool> outOfMemory{false};  // a loop's body must not throw
    pool.parallelFor(schedule.steps.size(), [&](std::size_t n, std::size_t) {
        const auto* work = std::get_if<FusedConvolution>(&schedule.steps[n].work);
        if (work == nullptr) return;
        try {
            prepared.byStep_[n] = prepare(*work, model, plan.values[work->convolution.input]);
        } catch (const std::bad_alloc&) {
            outOfMemory = true;
        }
    });
    if (outOfMemory) throw std::bad_alloc();
    return prepared;
}

}  // namespace quillmere::neural
