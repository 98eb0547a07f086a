// Networks on the desktop: compiled models, run by the neural runtime.
#pragma once

#include "Neural/Runtime/NetworkCache.h"
#include "Platform/CoreML/CoreML.h"

namespace quillmere {

inline constexpr const char* coreMLErrorDomain = "quillmere.coreml";

class DesktopCoreML final : public CoreML {
public:
    explicit DesktopCoreML(neural::NetworkCache& networks) : networks_(networks) {}

    /// Blocks only where `networks` does not have the model; the models may share one network.
    Result<MLModelRef> modelWithContentsOfURL(const std::filesystem::path& url,
                                              const MLModelConfiguration& configuration) override;
    Result<MLMultiArrayRef> multiArrayWithShape(const std::vector<std::size_t>& shape,
                                                MLMultiArrayDataType dataType) override;
    Result<MLFeatureProviderRef> dictionaryFeatureProvider(
        std::vector<std::pair<std::string, MLFeatureValue>> features) override;

private:
    neural::NetworkCache& networks_;
};

/// A provider of just these features; of several with one name the first counts.
MLFeatureProviderRef makeFeatureProvider(
    std::vector<std::pair<std::string, MLFeatureValue>> features);

}  // namespace quillmere
