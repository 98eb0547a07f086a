// Loading networks and running them on named features.
#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "Base/Result.h"
#include "Platform/CoreImage/CVPixelBuffer.h"

namespace quillmere {

/// How a model is to be run. Plain initialisation leaves every choice to the platform.
struct MLModelConfiguration {
    friend bool operator==(const MLModelConfiguration&, const MLModelConfiguration&) = default;
};

/// The element types of an array, with the platform's codes.
enum class MLMultiArrayDataType { float32 = 65568 };

/// A dense array of 32-bit floats, last dimension fastest. New elements have no stated value.
class MLMultiArray {
public:
    MLMultiArray(std::vector<std::size_t> shape, std::vector<float> elements)
        : shape_(std::move(shape)), elements_(std::move(elements)) {}

    const std::vector<std::size_t>& shape() const { return shape_; }
    const std::vector<float>& elements() const { return elements_; }

private:
    std::vector<std::size_t> shape_;
    std::vector<float> elements_;
};

using MLMultiArrayRef = std::shared_ptr<const MLMultiArray>;

/// What a feature holds: a picture or an array.
class MLFeatureValue {
public:
    static MLFeatureValue featureValueWithPixelBuffer(CVPixelBufferRef buffer) {
        return MLFeatureValue(std::move(buffer));
    }
    static MLFeatureValue featureValueWithMultiArray(MLMultiArrayRef array) {
        return MLFeatureValue(std::move(array));
    }

    /// Null if the feature is no picture.
    CVPixelBufferRef imageBufferValue() const { return as<CVPixelBufferRef>(); }
    /// Null if the feature is no array.
    MLMultiArrayRef multiArrayValue() const { return as<MLMultiArrayRef>(); }

private:
    using Value = std::variant<CVPixelBufferRef, MLMultiArrayRef>;

    explicit MLFeatureValue(Value value) : value_(std::move(value)) {}

    template <class Ref>
    Ref as() const {
        const Ref* ref = std::get_if<Ref>(&value_);
        return ref ? *ref : nullptr;
    }

    Value value_;
};

/// A set of named features.
class MLFeatureProvider {
public:
    virtual ~MLFeatureProvider() = default;

    virtual std::set<std::string> featureNames() const = 0;
    /// Nothing for a name that the provider doesn't have.
    virtual std::optional<MLFeatureValue> featureValueForName(const std::string& name) const = 0;
};

using MLFeatureProviderRef = std::shared_ptr<const MLFeatureProvider>;

/// A loaded network. Safe to use from several threads at once.
class MLModel {
public:
    virtual ~MLModel() = default;

    /// Runs the network once on the calling thread, which blocks. Fails when a feature is missing
    /// or of another kind than the model declares, or when memory runs out.
    virtual Result<MLFeatureProviderRef> predictionFromFeatures(
        const MLFeatureProvider& features) = 0;
};

using MLModelRef = std::shared_ptr<MLModel>;

/// May be called from any thread.
class CoreML {
public:
    virtual ~CoreML() = default;

    /// Blocks while the model is read. Fails for a model that is missing, damaged or unknown.
    virtual Result<MLModelRef> modelWithContentsOfURL(
        const std::filesystem::path& url, const MLModelConfiguration& configuration) = 0;

    virtual Result<MLMultiArrayRef> multiArrayWithShape(const std::vector<std::size_t>& shape,
                                                        MLMultiArrayDataType dataType) = 0;

    virtual Result<MLFeatureProviderRef> dictionaryFeatureProvider(
        std::vector<std::pair<std::string, MLFeatureValue>> features) = 0;
};

}  // namespace quillmere
