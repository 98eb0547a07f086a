#include "Neural/Runtime/PreparedWeights.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <new>
#include <optional>
#include <utility>

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

std::vector<int> channelsOf(std::span<const PlannedPlane> planes) {
    std::vector<int> channels;
    for (const PlannedPlane& plane : planes) channels.push_back(plane.channels);
    return channels;
}

ConvolutionWeights prepare(const FusedConvolution& work, const CompiledModel& model,
                           std::span<const PlannedPlane> inputPlanes) {
    const Convolution& convolution = work.convolution;
    std::vector<float> weights = floats(model.tensor(convolution.weights));
    std::vector<float> bias = floats(model.tensor(convolution.bias));
    scale(weights, work.scale);
    scale(bias, work.scale);
    if (work.enlargement != 1) {
        weights = foldEnlargement(work.enlargement, bias.size(), weights);
        bias = repeated(bias, work.enlargement);
    }
    const std::vector<float> slopes = repeated(slopesOf(convolution, model), work.enlargement);
    return ConvolutionWeights::arrange(convolution.kernel, channelsOf(inputPlanes), weights, bias,
                                       slopes);
}

// Names everything that `prepare` looks at.
WeightsKey keyOf(const FusedConvolution& work, const CompiledModel& model,
                 std::span<const PlannedPlane> inputPlanes) {
    const Convolution& convolution = work.convolution;
    const std::vector<TensorInfo>& tensors = model.graph().tensors;
    WeightsKey key;
    key.weights = tensors[convolution.weights].sha256;
    key.bias = tensors[convolution.bias].sha256;
    key.activation = convolution.activation;
    key.slope = convolution.slope;
    if (key.activation == Activation::prelu) key.slopes = tensors[convolution.slopes].sha256;
    key.kernel = convolution.kernel;
    key.outputs = convolution.outputs;
    key.inputChannels = channelsOf(inputPlanes);
    key.enlargement = work.enlargement;
    key.scale = work.scale;
    return key;
}

Result<void> verifyTensors(const Convolution& convolution, const CompiledModel& model) {
    if (auto intact = model.verify(convolution.weights); !intact) return intact;
    if (auto intact = model.verify(convolution.bias); !intact) return intact;
    if (convolution.activation != Activation::prelu) return {};
    return model.verify(convolution.slopes);
}

Result<WeightsTable::SharedWeights> share(const FusedConvolution& work, const CompiledModel& model,
                                          std::span<const PlannedPlane> inputPlanes,
                                          WeightsTable& table) {
    const WeightsKey key = keyOf(work, model, inputPlanes);
    if (auto known = table.find(key)) return known;
    if (auto intact = verifyTensors(work.convolution, model); !intact) return intact.error();
    return table.add(key, prepare(work, model, inputPlanes));
}

}  // namespace

Result<PreparedWeights> PreparedWeights::of(const CompiledModel& model, const Schedule& schedule,
                                            const ExecutionPlan& plan, WorkerPool& pool,
                                            WeightsTable& table) {
    PreparedWeights prepared;
    prepared.byStep_.resize(schedule.steps.size());
    std::mutex mutex;  // guards the failure
    std::optional<Error> failure;
    std::atomic<bool> outOfMemory{false};  // a loop's body must not throw
    pool.parallelFor(schedule.steps.size(), [&](std::size_t n, std::size_t) {
        const auto* work = std::get_if<FusedConvolution>(&schedule.steps[n].work);
        if (work == nullptr) return;
        try {
            auto weights = share(*work, model, plan.values[work->convolution.input], table);
            if (weights) {
                prepared.byStep_[n] = *std::move(weights);
            } else {
                const std::lock_guard lock(mutex);
                failure = weights.error();
            }
        } catch (const std::bad_alloc&) {
            outOfMemory = true;
        }
    });
    if (outOfMemory) throw std::bad_alloc();
    if (failure) return *failure;
    return prepared;
}

}  // namespace quillmere::neural
