// A tile engine over fakes that share one log.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Desktop/Dispatch/DesktopDispatch.h"
#include "Quillmere/Models/Enhance/TileEngine.h"
#include "Tests/Fakes/FakeAnalytics.h"
#include "Tests/Fakes/FakeBundles.h"
#include "Tests/Fakes/FakeConsole.h"
#include "Tests/Fakes/FakeCoreImage.h"
#include "Tests/Fakes/FakeCoreML.h"
#include "Tests/Fakes/FakeGraphics.h"
#include "Tests/Fakes/FakeLocalization.h"
#include "Tests/Fakes/FakeUserDefaults.h"
#include "Tests/Fakes/FakeVision.h"
#include "Tests/Fakes/ManualClock.h"

namespace quillmere {

/// A picture of `size` whose colour tells each pixel's place.
inline UIImage makePicture(PixelSize size, double scale = 1,
                           UIImageOrientation orientation = UIImageOrientation::up) {
    const std::size_t stride = static_cast<std::size_t>(size.width) * 4;
    const std::shared_ptr<std::uint8_t> pixels(
        new std::uint8_t[stride * static_cast<std::size_t>(size.height)],
        std::default_delete<std::uint8_t[]>());
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            std::uint8_t* pixel = pixels.get() + static_cast<std::size_t>(y) * stride + x * 4;
            pixel[0] = static_cast<std::uint8_t>(x);
            pixel[1] = static_cast<std::uint8_t>(y);
            pixel[2] = static_cast<std::uint8_t>((x >> 8) * 16 + (y >> 8));
            pixel[3] = 255;
        }
    }
    return UIImage(CGImage(size, stride, pixels), scale, orientation);
}

/// One call of the engine's completion.
struct Completed {
    std::optional<UIImage> picture;
    std::optional<std::string> text;
};

class EngineFixture : public testing::Test {
protected:
    EngineFixture() { localization.texts["FailedToConvertMessage"] = "Failed %@."; }

    /// Runs the engine on this thread, then what it posted to the main queue.
    std::vector<Completed> enhance(EnhanceStyle style, const UIImage& picture) {
        std::vector<Completed> completions;
        engine.enhanceImage(
            style, picture, [this](float fraction) { fractions.push_back(fraction); },
            [&](std::optional<UIImage> result, std::optional<std::string> text) {
                log.record("completion");
                completions.push_back({std::move(result), std::move(text)});
            });
        dispatch.mainQueue().runPending();
        return completions;
    }

    CallLog log;
    FakeUserDefaults userDefaults{log};
    FakeGraphics graphics{log};
    FakeCoreImage coreImage{log};
    FakeVision vision{log, coreImage};
    FakeCoreML coreML{log};
    FakeBundles bundles{log};
    FakeAnalytics analytics{log};
    FakeLocalization localization{log};
    FakeConsole console{log};
    DesktopDispatch dispatch{std::make_unique<ManualClock>()};
    ModelCatalogue catalogue{coreML, bundles};
    TileEngine engine{{userDefaults, graphics, coreImage, vision, catalogue, dispatch, analytics,
                       localization, console}};
    std::vector<float> fractions;
};

}  // namespace quillmere
