// A network of the neural runtime as the application knows models.
#pragma once

#include <memory>
#include <utility>

#include "Neural/Runtime/Network.h"
#include "Platform/CoreML/CoreML.h"

namespace quillmere {

class NetworkModel final : public MLModel {
public:
    explicit NetworkModel(std::shared_ptr<const neural::Network> network)
        : network_(std::move(network)) {}

    /// Takes one picture under the network's input name and gives one named "output". Any other
    /// kind of feature under that name fails, like a missing one.
    Result<MLFeatureProviderRef> predictionFromFeatures(const MLFeatureProvider& features) override;

    /// Runs the network on an 8-bit RGBA buffer of any size. Blocks; safe from any thread.
    Result<CVPixelBufferRef> enlarge(const CVPixelBuffer& input) const;

private:
    std::shared_ptr<const neural::Network> network_;
};

}  // namespace quillmere
