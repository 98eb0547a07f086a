// The adapters, the catalogue and the warm-up, as what they ask of the platform.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Desktop/Dispatch/DesktopDispatch.h"
#include "Quillmere/Models/Enhance/ModelAdapters.h"
#include "Quillmere/Models/Enhance/ModelCatalogue.h"
#include "Quillmere/Models/Enhance/ModelWarmUp.h"
#include "Tests/Fakes/FakeBundles.h"
#include "Tests/Fakes/FakeConsole.h"
#include "Tests/Fakes/FakeCoreML.h"

namespace quillmere {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Lines = std::vector<std::string>;

class Models : public testing::Test {
protected:
    CallLog log;
    FakeBundles bundles{log};
    FakeCoreML coreML{log};
    FakeConsole console{log};
    ModelCatalogue catalogue{coreML, bundles};
    DesktopDispatch dispatch;
    ModelWarmUp warmUp{catalogue, coreML, dispatch, console};
};

TEST_F(Models, EachStyleLoadsItsOwnNetworkFromItsOwnResource) {
    struct Case {
        EnhanceStyle style;
        std::string className;
        std::string resource;
    };
    const Case cases[] = {
        {EnhanceStyle::high, "bsrgan8", "bsrgan8"},
        {EnhanceStyle::superHigh, "bsrgan8", "bsrgan8"},
        {EnhanceStyle::godHigh, "real8", "real8"},
        {EnhanceStyle::oniHigh, "aesrgan8_single", "aesrgan8_single"},
        {EnhanceStyle::kyokuHigh, "MMRealSRGAN_8", "MMRealSRGAN_8"},
        {EnhanceStyle::speedGeneral, "real256_general_8", "real256_general_8"},
        {EnhanceStyle::speedAnime, "real256_anime_8", "real256_anime_8"},
        {EnhanceStyle::superSpeed, "fast_srgan", "fast-srgan"},
    };
    for (const Case& c : cases) {
        CallLog ownLog;
        FakeBundles ownBundles(ownLog);
        FakeCoreML ownCoreML(ownLog);
        const ModelCatalogue own(ownCoreML, ownBundles);
        EXPECT_TRUE(own.makeModel(c.style));
        EXPECT_TRUE(own.makeModel(c.style)) << "a second run loads anew";
        const Lines once = {"bundleForClass " + c.className,
                            "urlForResource " + c.resource + ".mlmodelc",
                            "load /bundle/" + c.resource + ".mlmodelc"};
        Lines twice = once;
        twice.insert(twice.end(), once.begin(), once.end());
        EXPECT_EQ(ownLog.lines(), twice) << displayKey(c.style);
    }
}

TEST_F(Models, StylesWithoutANetworkTouchNoFile) {
    EXPECT_FALSE(catalogue.makeModel(EnhanceStyle::original));
    EXPECT_FALSE(catalogue.makeModel(EnhanceStyle::rapidHQ));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(Models, AFailedLoadCountsAsNoModelAndSaysNothing) {
    coreML.loadError = Error{"model", 1, "damaged"};
    EXPECT_FALSE(catalogue.makeModel(EnhanceStyle::godHigh));
    EXPECT_EQ(log.lines().back(), "load /bundle/real8.mlmodelc");
    EXPECT_EQ(real8::load(coreML, bundles, {}).error(), *coreML.loadError);
}

TEST(ModelsDeathTest, AResourceThatTheApplicationWasNotBuiltWithEndsTheProcess) {
    CallLog log;
    FakeBundles bundles(log);
    FakeCoreML coreML(log);
    const ModelCatalogue catalogue(coreML, bundles);
    bundles.missing = {"fast-srgan.mlmodelc"};
    EXPECT_EXIT(catalogue.makeModel(EnhanceStyle::superSpeed), testing::KilledBySignal(SIGABRT),
                "");
}

template <class Input>
std::string onlyFeature(const Input& input) {
    const auto names = input.featureNames();
    EXPECT_EQ(names.size(), 1u);
    return *names.begin();
}

TEST_F(Models, EachInputClassKnowsItsOwnFeatureOnly) {
    const auto buffer =
        std::make_shared<const CVPixelBuffer>(PixelSize{1, 1}, CVPixelFormat::rgba8);
    const auto check = [&](const auto& input, const std::string& name) {
        EXPECT_EQ(onlyFeature(input), name);
        for (const std::string asked : {"input", "x_1", "input_3", "Input", ""}) {
            const auto value = input.featureValueForName(asked);
            ASSERT_EQ(value.has_value(), asked == name) << asked << " of " << name;
            if (value) {
                EXPECT_EQ(value->imageBufferValue(), buffer);
            }
        }
    };
    check(bsrgan8Input(buffer), "input");
    check(real8Input(buffer), "input");
    check(aesrgan8_singleInput(buffer), "input");
    check(real256_anime_8Input(buffer), "input");
    check(real256_general_8Input(buffer), "input");
    check(MMRealSRGAN_8Input(buffer), "x_1");
    check(fast_srganInput(buffer), "input_3");
    EXPECT_EQ(MMRealSRGAN_8Input(buffer).x_1, buffer);
    EXPECT_EQ(fast_srganInput(buffer).input_3, buffer);
}

TEST_F(Models, OutputForwardsNamesAndValuesItDoesNotKnow) {
    auto returned = std::make_shared<FakeCoreML::Features>();
    const auto buffer =
        std::make_shared<const CVPixelBuffer>(PixelSize{1, 1}, CVPixelFormat::rgba8);
    returned->values = {{"var_812", MLFeatureValue::featureValueWithPixelBuffer(buffer)}};
    const bsrgan8Output output(returned);
    EXPECT_EQ(output.featureNames(), std::set<std::string>{"var_812"});
    EXPECT_EQ(output.featureValueForName("var_812")->imageBufferValue(), buffer);
    EXPECT_FALSE(output.featureValueForName("input"));
}

TEST_F(Models, WarmUpPredictsOnceUnderTheLiteralNameAndKeepsNothing) {
    warmUp.warmUpModel(EnhanceStyle::kyokuHigh);
    EXPECT_THAT(
        log.lines(),
        ElementsAre("bundleForClass MMRealSRGAN_8", "urlForResource MMRealSRGAN_8.mlmodelc",
                    "load /bundle/MMRealSRGAN_8.mlmodelc", "multiArray type=65568",
                    "prediction input 1 3 256 256", "console ✅ Model warmed up predictions"));
    EXPECT_EQ(coreML.modelsAlive, 0);
}

TEST_F(Models, WarmUpSaysWhatItsFailuresDeserve) {
    struct Case {
        const char* what;
        std::optional<Error> FakeCoreML::*error;
        std::string lastLine;
    };
    const Case cases[] = {
        {"a failed prediction is of no interest", &FakeCoreML::predictionError,
         "console ✅ Model warmed up predictions"},
        {"no array", &FakeCoreML::arrayError, "console ⚠️ Model warm-up failed"},
        {"no provider", &FakeCoreML::providerError, "console ⚠️ Model warm-up failed"},
        {"no model is silent", &FakeCoreML::loadError, "load /bundle/bsrgan8.mlmodelc"},
    };
    for (const Case& c : cases) {
        coreML.loadError = coreML.arrayError = coreML.providerError = coreML.predictionError = {};
        coreML.*(c.error) = Error{"fake", 1, "no"};
        warmUp.warmUpModel(EnhanceStyle::high);
        EXPECT_EQ(log.lines().back(), c.lastLine) << c.what;
    }
}

TEST_F(Models, WarmUpOfAStyleWithoutANetworkPrintsNothing) {
    warmUp.warmUpModel(EnhanceStyle::original);
    warmUp.warmUpModel(EnhanceStyle::rapidHQ);
    EXPECT_THAT(log.lines(), IsEmpty());
}

/// Notes which global queue is asked for.
class ListeningDispatch final : public Dispatch {
public:
    explicit ListeningDispatch(Dispatch& real) : real_(real) {}
    DispatchQueue& mainQueue() override { return real_.mainQueue(); }
    DispatchQueue& globalQueue(QualityOfService quality) override {
        asked.push_back(quality);
        return real_.globalQueue(quality);
    }
    std::shared_ptr<DispatchQueue> makeSerialQueue(std::string label,
                                                   QualityOfService quality) override {
        return real_.makeSerialQueue(std::move(label), quality);
    }
    std::shared_ptr<DispatchGroup> makeGroup() override { return real_.makeGroup(); }
    std::shared_ptr<DispatchSemaphore> makeSemaphore(int count) override {
        return real_.makeSemaphore(count);
    }
    std::chrono::nanoseconds now() const override { return real_.now(); }

    std::vector<QualityOfService> asked;

private:
    Dispatch& real_;
};

TEST_F(Models, ScheduledWarmUpLeavesTheCallersThreadForTheMostUrgentQueue) {
    // The load blocks until the call below has returned: a warm-up on this thread would hang.
    class Waiting final : public Bundles {
    public:
        Waiting(DispatchSemaphore& gate, const Bundles& real) : gate_(gate), real_(real) {}
        const Bundle& bundleForClass(std::string_view name) const override {
            gate_.wait();
            return real_.bundleForClass(name);
        }

    private:
        DispatchSemaphore& gate_;
        const Bundles& real_;
    };
    const auto gate = dispatch.makeSemaphore(0);
    const Waiting waiting(*gate, bundles);
    const ModelCatalogue slow(coreML, waiting);

    class Signalling final : public Console {
    public:
        explicit Signalling(DispatchSemaphore& printed) : printed_(printed) {}
        void print(std::string_view) override { printed_.signal(); }
        void report(const std::vector<Error>&) override {}

    private:
        DispatchSemaphore& printed_;
    };
    const auto printed = dispatch.makeSemaphore(0);
    Signalling signalling(*printed);
    ListeningDispatch listening(dispatch);
    ModelWarmUp scheduled(slow, coreML, listening, signalling);
    scheduled.scheduleModelWarmUp(EnhanceStyle::high);
    gate->signal();
    printed->wait();
    EXPECT_EQ(log.lines().back(), "prediction input 1 3 256 256");
    EXPECT_THAT(listening.asked, ElementsAre(QualityOfService::userInteractive));
}

}  // namespace
}  // namespace quillmere
