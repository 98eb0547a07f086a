// The seven networks as typed classes: each finds its resource and names its input feature.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "Base/Result.h"
#include "Platform/Application/Bundle.h"
#include "Platform/CoreML/CoreML.h"

namespace quillmere {

/// Where a network's compiled form lies; its extension is "mlmodelc".
struct ModelResource {
    std::string_view className;
    std::string_view resourceName;
};

/// Loads a resource on the calling thread. A resource that the application was not built with is
/// a broken invariant; one that can't be loaded is an error.
Result<MLModelRef> loadModelResource(const ModelResource& resource, CoreML& coreML,
                                     const Bundles& bundles,
                                     const MLModelConfiguration& configuration);

/// The input field of a network, under the name of its input feature.
struct FieldInput {
    static constexpr std::string_view featureName = "input";
    CVPixelBufferRef input;
    const CVPixelBufferRef& buffer() const { return input; }
};
struct FieldX1 {
    static constexpr std::string_view featureName = "x_1";
    CVPixelBufferRef x_1;
    const CVPixelBufferRef& buffer() const { return x_1; }
};
struct FieldInput3 {
    static constexpr std::string_view featureName = "input_3";
    CVPixelBufferRef input_3;
    const CVPixelBufferRef& buffer() const { return input_3; }
};

/// A loaded network, with the classes of its input and output features. Every network takes a
/// picture of 256 by 256 and gives one of 1024 by 1024; its callers rely on that unchecked.
template <const ModelResource& resource, class Field>
struct ModelAdapter {
    MLModelRef model;

    static Result<ModelAdapter> load(CoreML& coreML, const Bundles& bundles,
                                     const MLModelConfiguration& configuration) {
        Result<MLModelRef> loaded = loadModelResource(resource, coreML, bundles, configuration);
        if (!loaded) return loaded.error();
        return ModelAdapter{*std::move(loaded)};
    }

    class Input final : public MLFeatureProvider, public Field {
    public:
        explicit Input(CVPixelBufferRef buffer) : Field{std::move(buffer)} {}

        std::set<std::string> featureNames() const override {
            return {std::string(Field::featureName)};
        }
        std::optional<MLFeatureValue> featureValueForName(const std::string& name) const override {
            if (name != Field::featureName) return std::nullopt;
            return MLFeatureValue::featureValueWithPixelBuffer(this->buffer());
        }
    };

    /// Forwards what a prediction returned, without knowing its names.
    class Output final : public MLFeatureProvider {
    public:
        explicit Output(MLFeatureProviderRef returned) : provider(std::move(returned)) {}

        std::set<std::string> featureNames() const override { return provider->featureNames(); }
        std::optional<MLFeatureValue> featureValueForName(const std::string& name) const override {
            return provider->featureValueForName(name);
        }

        MLFeatureProviderRef provider;
    };
};

namespace resources {
inline constexpr ModelResource real256Anime{"real256_anime_8", "real256_anime_8"};
inline constexpr ModelResource mmRealSRGAN{"MMRealSRGAN_8", "MMRealSRGAN_8"};
inline constexpr ModelResource fastSRGAN{"fast_srgan", "fast-srgan"};
inline constexpr ModelResource bsrgan{"bsrgan8", "bsrgan8"};
inline constexpr ModelResource real{"real8", "real8"};
inline constexpr ModelResource aesrganSingle{"aesrgan8_single", "aesrgan8_single"};
inline constexpr ModelResource real256General{"real256_general_8", "real256_general_8"};
}  // namespace resources

using real256_anime_8 = ModelAdapter<resources::real256Anime, FieldInput>;
using real256_anime_8Input = real256_anime_8::Input;
using real256_anime_8Output = real256_anime_8::Output;

using MMRealSRGAN_8 = ModelAdapter<resources::mmRealSRGAN, FieldX1>;
using MMRealSRGAN_8Input = MMRealSRGAN_8::Input;
using MMRealSRGAN_8Output = MMRealSRGAN_8::Output;

using fast_srgan = ModelAdapter<resources::fastSRGAN, FieldInput3>;
using fast_srganInput = fast_srgan::Input;
using fast_srganOutput = fast_srgan::Output;

using bsrgan8 = ModelAdapter<resources::bsrgan, FieldInput>;
using bsrgan8Input = bsrgan8::Input;
using bsrgan8Output = bsrgan8::Output;

using real8 = ModelAdapter<resources::real, FieldInput>;
using real8Input = real8::Input;
using real8Output = real8::Output;

using aesrgan8_single = ModelAdapter<resources::aesrganSingle, FieldInput>;
using aesrgan8_singleInput = aesrgan8_single::Input;
using aesrgan8_singleOutput = aesrgan8_single::Output;

using real256_general_8 = ModelAdapter<resources::real256General, FieldInput>;
using real256_general_8Input = real256_general_8::Input;
using real256_general_8Output = real256_general_8::Output;

}  // namespace quillmere
