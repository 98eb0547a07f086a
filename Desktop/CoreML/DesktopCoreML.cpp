#include "Desktop/CoreML/DesktopCoreML.h"

#include <limits>
#include <map>
#include <new>

#include "Desktop/CoreML/NetworkModel.h"

namespace quillmere {
namespace {

class Features final : public MLFeatureProvider {
public:
    explicit Features(std::vector<std::pair<std::string, MLFeatureValue>> features)
        : values_(std::make_move_iterator(features.begin()),
                  std::make_move_iterator(features.end())) {}

    std::set<std::string> featureNames() const override {
        std::set<std::string> names;
        for (const auto& [name, value] : values_) names.insert(name);
        return names;
    }

    std::optional<MLFeatureValue> featureValueForName(const std::string& name) const override {
        const auto found = values_.find(name);
        if (found == values_.end()) return std::nullopt;
        return found->second;
    }

private:
    std::map<std::string, MLFeatureValue> values_;
};

}  // namespace

MLFeatureProviderRef makeFeatureProvider(
    std::vector<std::pair<std::string, MLFeatureValue>> features) {
    return std::make_shared<Features>(std::move(features));
}

Result<MLModelRef> DesktopCoreML::modelWithContentsOfURL(const std::filesystem::path& url,
                                                         const MLModelConfiguration&) {
    auto network = networks_.load(url);
    if (!network) return network.error();
    return MLModelRef(std::make_shared<NetworkModel>(*std::move(network)));
}

Result<MLMultiArrayRef> DesktopCoreML::multiArrayWithShape(const std::vector<std::size_t>& shape,
                                                           MLMultiArrayDataType) {
    std::size_t count = 1;
    bool fits = true;
    for (const std::size_t side : shape)
        fits = fits && !__builtin_mul_overflow(count, side, &count);
    if (fits && count <= std::numeric_limits<std::size_t>::max() / sizeof(float) / 2) {
        try {
            return std::make_shared<const MLMultiArray>(shape, std::vector<float>(count));
        } catch (const std::bad_alloc&) {
        }
    }
    return Error{coreMLErrorDomain, 2, "There is not enough memory for the array."};
}

Result<MLFeatureProviderRef> DesktopCoreML::dictionaryFeatureProvider(
    std::vector<std::pair<std::string, MLFeatureValue>> features) {
    return makeFeatureProvider(std::move(features));
}

}  // namespace quillmere
