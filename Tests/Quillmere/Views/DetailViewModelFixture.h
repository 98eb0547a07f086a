// A detail screen's logic over fakes.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "Desktop/Dispatch/DesktopDispatch.h"
#include "Quillmere/Models/Services/PreferenceKeys.h"
#include "Quillmere/Views/Detail/DetailViewModel.h"
#include "Tests/Fakes/FakeAVFoundation.h"
#include "Tests/Fakes/FakeAdLibrary.h"
#include "Tests/Fakes/FakeAnalytics.h"
#include "Tests/Fakes/FakeConsole.h"
#include "Tests/Fakes/FakeDateFormatter.h"
#include "Tests/Fakes/FakeGraphics.h"
#include "Tests/Fakes/FakeImageIO.h"
#include "Tests/Fakes/FakeImageMetadata.h"
#include "Tests/Fakes/FakeItemProvider.h"
#include "Tests/Fakes/FakeLocalization.h"
#include "Tests/Fakes/FakePhotoLibrary.h"
#include "Tests/Fakes/FakeRemoteConfig.h"
#include "Tests/Fakes/FakeUIApplication.h"
#include "Tests/Fakes/FakeUserDefaults.h"
#include "Tests/Fakes/ManualClock.h"

namespace quillmere {

class DetailViewModelTest : public testing::Test {
protected:
    using Lines = std::vector<std::string>;

    struct FakeDevice final : Device {
        SystemVersion version{26, 0};
        SystemVersion systemVersion() const override { return version; }
    };

    struct FakeReview final : SKStoreReviewController {
        int requests = 0;
        void requestReviewInScene(UIWindowScene&) override { ++requests; }
    };

    DetailViewModelTest() {
        application.scenes = {&scene};
        enhance = [](EnhanceStyle, const UIImage& image, const TileEngine::Progress&,
                     const TileEngine::Completion& completion) {
            const Size size = image.size();
            completion(FakeImageIO::picture(
                           {static_cast<int>(size.width * 2), static_cast<int>(size.height * 2)}),
                       std::nullopt);
        };
        model = std::make_shared<DetailViewModel>(ports());
    }

    DetailPorts ports() {
        return {
            *dispatch,
            analytics,
            localization,
            userDefaults,
            graphics,
            imageIO,
            {imageMetadata, dateFormatter},
            library,
            avFoundation,
            device,
            application,
            review,
            std::make_shared<DetailAds>(DetailAds::Ports{ads, application, userDefaults, remote,
                                                         analytics, console, *conversionAds},
                                        "save"),
            [this](EnhanceStyle style, const UIImage& image, const TileEngine::Progress& progress,
                   const TileEngine::Completion& completion) {
                enhance(style, image, progress, completion);
            },
            [this](double, double) { return factor; }};
    }

    void pumpUntil(const std::function<bool()>& predicate) {
        dispatch->mainQueue().runUntil(predicate);
    }

    /// Until what is posted to the main queue by now has run.
    void pump() {
        bool last = false;
        dispatch->mainQueue().async([&] { last = true; });
        pumpUntil([&] { return last; });
    }

    void convert(EnhanceStyle style) {
        model->selectedStyle.set(style);
        model->convert();
        pumpUntil([this] { return !model->isConverting.get(); });
    }

    std::optional<std::string> alertMessage() const {
        const auto alert = model->alert.get();
        return alert ? alert->message() : std::nullopt;
    }

    static Size sizeOf(const std::optional<UIImage>& image) {
        return image ? image->size() : Size{0, 0};
    }

    /// The lines of the log that begin so, from `start` on.
    Lines lines(const std::string& beginning, std::size_t start = 0) const {
        Lines found;
        const Lines all = log.lines();
        for (std::size_t i = start; i < all.size(); ++i) {
            if (all[i].starts_with(beginning)) found.push_back(all[i]);
        }
        return found;
    }

    CallLog log;
    ManualClock* clock = new ManualClock;  // the dispatch's
    std::unique_ptr<DesktopDispatch> dispatch =
        std::make_unique<DesktopDispatch>(std::unique_ptr<Clock>(clock));
    FakeAnalytics analytics{log};
    FakeLocalization localization{log};
    FakeUserDefaults userDefaults{log};
    FakeGraphics graphics{log};
    FakeImageIO imageIO{log};
    FakeImageMetadata imageMetadata{log};
    FakeDateFormatter dateFormatter;
    FakePhotoLibrary library{*dispatch};
    FakeAVFoundation avFoundation{log, *dispatch};
    FakeDevice device;
    FakeWindowScene scene;
    FakeUIApplication application;
    FakeReview review;
    FakeAdLibrary ads{log};
    FakeConsole console{log};
    FakeRemoteConfig remote{log, *dispatch};
    std::shared_ptr<InterstitialAdManager> conversionAds =
        std::make_shared<InterstitialAdManager>(ads, console, "conversion");
    std::optional<int> factor;
    EnhanceImage enhance;
    std::shared_ptr<DetailViewModel> model;
};

}  // namespace quillmere
