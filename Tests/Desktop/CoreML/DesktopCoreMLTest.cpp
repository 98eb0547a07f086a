#include "Desktop/CoreML/DesktopCoreML.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <limits>

#include "Desktop/Application/ResourceBundle.h"
#include "Desktop/Dispatch/DesktopDispatch.h"
#include "Quillmere/Models/Enhance/ModelAdapters.h"
#include "Quillmere/Models/Enhance/ModelCatalogue.h"
#include "Quillmere/Models/Enhance/ModelWarmUp.h"
#include "Tests/Fakes/FakeConsole.h"

namespace quillmere {
namespace {

class DesktopCoreMLAdapter : public testing::Test {
protected:
    WorkerPool pool;
    neural::NetworkCache networks{pool};
    DesktopCoreML coreML{networks};
    ResourceBundle bundle{std::filesystem::path(QUILLMERE_MODELS_DIR).parent_path()};
    CVPixelBufferRef picture = [] {
        auto buffer = std::make_shared<CVPixelBuffer>(PixelSize{8, 6}, CVPixelFormat::rgba8);
        std::fill_n(buffer->baseAddress(), 8 * 6 * 4, static_cast<std::uint8_t>(100));
        return buffer;
    }();
};

template <class Adapter>
void expectTakesItsOwnInput(CoreML& coreML, const Bundles& bundles,
                            const CVPixelBufferRef& buffer) {
    const auto adapter = Adapter::load(coreML, bundles, {});
    ASSERT_TRUE(adapter) << adapter.error().localizedDescription;
    const auto returned = adapter->model->predictionFromFeatures(typename Adapter::Input(buffer));
    ASSERT_TRUE(returned) << returned.error().localizedDescription;
    const typename Adapter::Output output(*returned);
    ASSERT_EQ(output.featureNames().size(), 1u);
    const auto value = output.featureValueForName(*output.featureNames().begin());
    EXPECT_EQ(value->imageBufferValue()->size(), (PixelSize{32, 24}));
}

TEST_F(DesktopCoreMLAdapter, EveryAdapterNamesTheInputThatItsNetworkDeclares) {
    expectTakesItsOwnInput<real256_anime_8>(coreML, bundle, picture);
    expectTakesItsOwnInput<MMRealSRGAN_8>(coreML, bundle, picture);
    expectTakesItsOwnInput<fast_srgan>(coreML, bundle, picture);
    expectTakesItsOwnInput<bsrgan8>(coreML, bundle, picture);
    expectTakesItsOwnInput<real8>(coreML, bundle, picture);
    expectTakesItsOwnInput<aesrgan8_single>(coreML, bundle, picture);
    expectTakesItsOwnInput<real256_general_8>(coreML, bundle, picture);
}

TEST_F(DesktopCoreMLAdapter, AFeatureOfAnotherKindOrNameIsAnError) {
    const auto model = fast_srgan::load(coreML, bundle, {})->model;
    const auto array = coreML.multiArrayWithShape({1, 3, 8, 8}, MLMultiArrayDataType::float32);
    const auto wrongKind = coreML.dictionaryFeatureProvider(
        {{"input_3", MLFeatureValue::featureValueWithMultiArray(*array)}});
    EXPECT_FALSE(model->predictionFromFeatures(**wrongKind));
    EXPECT_FALSE(model->predictionFromFeatures(bsrgan8Input(picture)));
}

TEST_F(DesktopCoreMLAdapter, ArraysThatDoNotFitAreErrors) {
    constexpr std::size_t huge = std::numeric_limits<std::size_t>::max();
    for (const auto& shape :
         {std::vector<std::size_t>{huge}, {huge / 2, 3}, {1u << 31, 1u << 31}}) {
        EXPECT_FALSE(coreML.multiArrayWithShape(shape, MLMultiArrayDataType::float32));
    }
    const auto array = coreML.multiArrayWithShape({2, 3}, MLMultiArrayDataType::float32);
    EXPECT_EQ((*array)->elements().size(), 6u);
}

TEST_F(DesktopCoreMLAdapter, AModelThatIsNotThereIsAnError) {
    EXPECT_FALSE(coreML.modelWithContentsOfURL("/no/such/model.mlmodelc", {}));
    EXPECT_FALSE(bundle.urlForResource("missing", "json"));
    EXPECT_TRUE(bundle.urlForResource("missing", "mlmodelc")) << "loading it is what fails";
}

TEST_F(DesktopCoreMLAdapter, TheFirstConversionPreparesWhatTheWarmUpPrepared) {
    CallLog log;
    FakeConsole console{log};
    DesktopDispatch dispatch;
    const ModelCatalogue catalogue(coreML, bundle);
    ModelWarmUp(catalogue, coreML, dispatch, console).warmUpModel(EnhanceStyle::superSpeed);
    const auto prepared = networks.preparations();
    EXPECT_GT(prepared, 0u);
    EXPECT_TRUE(catalogue.makeModel(EnhanceStyle::superSpeed));
    EXPECT_EQ(networks.preparations(), prepared);
}

}  // namespace
}  // namespace quillmere
