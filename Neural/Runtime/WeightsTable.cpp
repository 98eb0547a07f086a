#include "Neural/Runtime/WeightsTable.h"

#include <utility>

namespace quillmere::neural {

WeightsTable::SharedWeights WeightsTable::find(const WeightsKey& key) const {
    const std::lock_guard lock(mutex_);
    const auto found = known_.find(key);
    return found == known_.end() ? nullptr : found->second.lock();
}

WeightsTable::SharedWeights WeightsTable::add(const WeightsKey& key, ConvolutionWeights made) {
    const auto weights = std::make_shared<const ConvolutionWeights>(std::move(made));
    const std::lock_guard lock(mutex_);
    ++additions_;
    std::weak_ptr<const ConvolutionWeights>& known = known_[key];
    if (SharedWeights earlier = known.lock()) return earlier;
    known = weights;
    return weights;
}

std::size_t WeightsTable::bytes() const {
    const std::lock_guard lock(mutex_);
    std::size_t sum = 0;
    // Keys of weights that are gone would otherwise pile up.
    std::erase_if(known_, [&](const auto& entry) {
        const SharedWeights weights = entry.second.lock();
        if (weights) sum += weights->bytes();
        return !weights;
    });
    return sum;
}

std::uint64_t WeightsTable::additions() const {
    const std::lock_guard lock(mutex_);
    return additions_;
}

}  // namespace quillmere::neural
