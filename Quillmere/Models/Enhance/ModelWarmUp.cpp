#include "Quillmere/Models/Enhance/ModelWarmUp.h"

#include <utility>

namespace quillmere {

void ModelWarmUp::scheduleModelWarmUp(EnhanceStyle style) {
    dispatch_.globalQueue(QualityOfService::userInteractive).async([this, style] {
        warmUpModel(style);
    });
}

void ModelWarmUp::warmUpModel(EnhanceStyle style) {
    const MLModelRef model = catalogue_.makeModel(style);
    if (!model) return;
    constexpr const char* failed = "⚠️ Model warm-up failed";

    Result<MLMultiArrayRef> array =
        coreML_.multiArrayWithShape({1, 3, 256, 256}, MLMultiArrayDataType::float32);
    if (!array) return console_.print(failed);

    const Result<MLFeatureProviderRef> features = coreML_.dictionaryFeatureProvider(
        {{"input", MLFeatureValue::featureValueWithMultiArray(*std::move(array))}});
    if (!features) return console_.print(failed);

    (void)model->predictionFromFeatures(**features);
    console_.print("✅ Model warmed up predictions");
}

}  // namespace quillmere
