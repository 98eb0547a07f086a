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

ConvolutionWeights prepare(const Convolution& op, const CompiledModel& model,
                           const ExecutionPlan& plan) {
    std::vector<int> inputChannels;
    for (const PlannedPlane& plane : plan.values[op.input]) inputChannels.push_back(plane.channels);
    return ConvolutionWeights::arrange(op.kernel, inputChannels, floats(model.tensor(op.weights)),
                                       floats(model.tensor(op.bias)), slopesOf(op, model));
}

}  // namespace

PreparedWeights PreparedWeights::of(const CompiledModel& model, const ExecutionPlan& plan,
                                    WorkerPool& pool) {
    const std::vector<Operation>& operations = model.graph().operations;
    PreparedWeights prepared;
    prepared.byOperation_.resize(operations.size());
    std::atomic<bool> outOfMemory{false};  // a loop's body must not throw
    pool.parallelFor(operations.size(), [&](std::size_t n, std::size_t) {
        const auto* convolution = std::get_if<Convolution>(&operations[n]);
        if (convolution == nullptr) return;
        try {
            prepared.byOperation_[n] = prepare(*convolution, model, plan);
        } catch (const std::bad_alloc&) {
            outOfMemory = true;
        }
    });
    if (outOfMemory) throw std::bad_alloc();
    return prepared;
}

}  // namespace quillmere::neural
