#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Platform/CoreML/CoreML.h"
#include "Tests/Fakes/CallLog.h"

namespace quillmere {

/// Loads a model from any location; each operation can be told to fail.
class FakeCoreML final : public CoreML {
public:
    explicit FakeCoreML(CallLog& log) : log_(log) {}

    class Model final : public MLModel {
    public:
        explicit Model(const FakeCoreML& owner) : owner_(owner) { ++owner_.modelsAlive; }
        ~Model() override { --owner_.modelsAlive; }

        Result<MLFeatureProviderRef> predictionFromFeatures(
            const MLFeatureProvider& features) override {
            std::string line = "prediction";
            for (const std::string& name : features.featureNames()) {
                line += " " + name;
                const auto array = features.featureValueForName(name)->multiArrayValue();
                if (!array) continue;
                for (const std::size_t side : array->shape()) line += " " + std::to_string(side);
            }
            owner_.log_.record(line);
            if (owner_.predictionError) return *owner_.predictionError;
            return MLFeatureProviderRef(std::make_shared<Features>());
        }

    private:
        const FakeCoreML& owner_;
    };

    class Features final : public MLFeatureProvider {
    public:
        std::set<std::string> featureNames() const override {
            std::set<std::string> names;
            for (const auto& [name, value] : values) names.insert(name);
            return names;
        }
        std::optional<MLFeatureValue> featureValueForName(const std::string& name) const override {
            for (const auto& [known, value] : values) {
                if (known == name) return value;
            }
            return std::nullopt;
        }

        std::vector<std::pair<std::string, MLFeatureValue>> values;
    };

    Result<MLModelRef> modelWithContentsOfURL(const std::filesystem::path& url,
                                              const MLModelConfiguration&) override {
        log_.record("load " + url.string());
        if (loadError) return *loadError;
        return MLModelRef(std::make_shared<Model>(*this));
    }

    Result<MLMultiArrayRef> multiArrayWithShape(const std::vector<std::size_t>& shape,
                                                MLMultiArrayDataType dataType) override {
        log_.record("multiArray type=" + std::to_string(static_cast<int>(dataType)));
        if (arrayError) return *arrayError;
        return MLMultiArrayRef(std::make_shared<MLMultiArray>(shape, std::vector<float>()));
    }

    Result<MLFeatureProviderRef> dictionaryFeatureProvider(
        std::vector<std::pair<std::string, MLFeatureValue>> features) override {
        if (providerError) return *providerError;
        auto provider = std::make_shared<Features>();
        provider->values = std::move(features);
        return MLFeatureProviderRef(std::move(provider));
    }

    std::optional<Error> loadError;
    std::optional<Error> arrayError;
    std::optional<Error> providerError;
    std::optional<Error> predictionError;
    mutable int modelsAlive = 0;

private:
    CallLog& log_;
};

}  // namespace quillmere
