// Prepared weights by what they were made of, so that those of several networks are stored once.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Neural/Kernels/Convolution.h"
#include "Neural/Model/Graph.h"

namespace quillmere::neural {

/// All that a convolution's prepared weights depend on: equal keys, equal weights. What follows
/// from other fields, like the choice of the algorithm, needs no field of its own. No number is
/// NaN, which `Convolution` and `FusedConvolution` can't hold.
struct WeightsKey {
    std::string weights;  // SHA-256 of the tensor, as are the next two
    std::string bias;
    std::string slopes;  // empty unless the activation is prelu
    int kernel = 0;
    int outputs = 0;
    std::vector<int> inputChannels;  // of each plane
    Activation activation = Activation::none;
    float slope = 0;
    int enlargement = 1;
    float scale = 1;

    friend auto operator<=>(const WeightsKey&, const WeightsKey&) = default;
};

/// Knows weights for as long as somebody else holds them, and holds none itself. Safe to use from
/// any thread.
class WeightsTable {
public:
    using SharedWeights = std::shared_ptr<const ConvolutionWeights>;

    WeightsTable() = default;
    WeightsTable(const WeightsTable&) = delete;
    WeightsTable& operator=(const WeightsTable&) = delete;

    /// Null where nobody holds such weights.
    SharedWeights find(const WeightsKey& key) const;
    /// Returns the weights to use: `made`, or those that another thread added in the meantime.
    SharedWeights add(const WeightsKey& key, ConvolutionWeights made);

    /// The memory of all weights that somebody holds, each counted once.
    std::size_t bytes() const;
    /// How often weights were added since the table exists: what `find` could not spare.
    std::uint64_t additions() const;

private:
    mutable std::mutex mutex_;
    mutable std::map<WeightsKey, std::weak_ptr<const ConvolutionWeights>> known_;
    std::uint64_t additions_ = 0;
};

}  // namespace quillmere::neural
