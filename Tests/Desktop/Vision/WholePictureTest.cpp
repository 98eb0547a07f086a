// Whole pictures through the real adapters, against a plain evaluation of the tile rules.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>
#include <random>
#include <vector>

#include "Base/WorkerPool.h"
#include "Desktop/Application/ErrorStreamConsole.h"
#include "Desktop/Application/ResourceBundle.h"
#include "Desktop/CoreImage/DesktopCoreImage.h"
#include "Desktop/CoreML/DesktopCoreML.h"
#include "Desktop/CoreML/NetworkModel.h"
#include "Desktop/Dispatch/DesktopDispatch.h"
#include "Desktop/Graphics/DesktopGraphics.h"
#include "Desktop/Vision/DesktopVision.h"
#include "Quillmere/Models/Enhance/TileEngine.h"
#include "Tests/Fakes/FakeAnalytics.h"
#include "Tests/Fakes/FakeLocalization.h"
#include "Tests/Fakes/FakeUserDefaults.h"

namespace quillmere {
namespace {

struct Bitmap {
    int width, height;
    std::vector<std::uint8_t> rgba;

    Bitmap(int w, int h) : width(w), height(h), rgba(static_cast<std::size_t>(w * h * 4)) {}
    std::uint8_t* at(int x, int y) { return rgba.data() + (y * width + x) * 4; }
    const std::uint8_t* at(int x, int y) const { return rgba.data() + (y * width + x) * 4; }
};

/// Smooth shapes with some grain, so that networks have something to do.
Bitmap makeSource(int width, int height) {
    Bitmap source(width, height);
    std::mt19937 random(7);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const double wave = std::sin(x * 0.11) * std::cos(y * 0.07);
            for (int c = 0; c < 3; ++c) {
                const double grain = static_cast<double>(random() % 17) - 8;
                source.at(x, y)[c] = static_cast<std::uint8_t>(
                    std::clamp(128 + 100 * wave * (c - 1.5) + grain, 0.0, 255.0));
            }
            source.at(x, y)[3] = 255;
        }
    }
    return source;
}

/// A tile's canvas: its content, and beyond the picture's outer edges one line more. That line
/// repeats the outermost one; in the last tile of all it comes from the diagonal draw, which lies
/// over the two others, and so is one pixel further along.
Bitmap makeCanvas(const Bitmap& source, int row, int column, int rows, int columns) {
    Bitmap canvas(256, 256);
    const int left = column * 244, top = row * 244;
    const int w = std::min(256, source.width - left), h = std::min(256, source.height - top);
    const bool lastColumn = column + 1 == columns, lastRow = row + 1 == rows;
    const int along = lastColumn && lastRow ? 1 : 0;
    for (int y = 0; y < std::min(256, h + (lastRow ? 1 : 0)); ++y) {
        for (int x = 0; x < std::min(256, w + (lastColumn ? 1 : 0)); ++x) {
            const bool beyond = x == w || y == h;
            const int fromX = std::clamp(x - (beyond ? along : 0), 0, w - 1);
            const int fromY = std::clamp(y - (beyond ? along : 0), 0, h - 1);
            const std::uint8_t* from = source.at(left + fromX, top + fromY);
            std::copy(from, from + 4, canvas.at(x, y));
        }
    }
    return canvas;
}

class WholePicture : public testing::Test {
protected:
    /// Each place of the result from the one tile that shows there.
    Bitmap evaluatePlainly(const Bitmap& source, const std::string& resource) {
        const auto model = coreML.modelWithContentsOfURL(
            *bundle.urlForResource(resource, "mlmodelc"), MLModelConfiguration{});
        if (!model) {
            ADD_FAILURE() << model.error().localizedDescription;
            return Bitmap(1, 1);
        }
        const auto& network = dynamic_cast<const NetworkModel&>(**model);
        const int columns = (source.width + 243) / 244, rows = (source.height + 243) / 244;
        std::vector<CVPixelBufferRef> outputs;
        for (int row = 0; row < rows; ++row) {
            for (int column = 0; column < columns; ++column) {
                const Bitmap canvas = makeCanvas(source, row, column, rows, columns);
                CVPixelBuffer input({256, 256}, CVPixelFormat::rgba8);
                std::copy(canvas.rgba.begin(), canvas.rgba.end(), input.baseAddress());
                outputs.push_back(*network.enlarge(input));
            }
        }
        Bitmap result(source.width * 4, source.height * 4);
        for (int y = 0; y < result.height; ++y) {
            for (int x = 0; x < result.width; ++x) {
                const int column = std::min(columns - 1, x < 982 ? 0 : (x - 6) / 976);
                const int row = std::min(rows - 1, y < 994 ? 0 : (y - 18) / 976);
                const CVPixelBufferRef& output =
                    outputs[static_cast<std::size_t>(row * columns + column)];
                const std::uint8_t* from =
                    output->baseAddress() + (y - row * 976) * 4096 + (x - column * 976) * 4;
                std::copy(from, from + 4, result.at(x, y));
            }
        }
        return result;
    }

    UIImage enhance(EnhanceStyle style, const Bitmap& source) {
        const std::shared_ptr<std::uint8_t> pixels(new std::uint8_t[source.rgba.size()],
                                                   std::default_delete<std::uint8_t[]>());
        std::copy(source.rgba.begin(), source.rgba.end(), pixels.get());
        const UIImage picture{CGImage({source.width, source.height},
                                      static_cast<std::size_t>(source.width) * 4, pixels)};
        std::optional<UIImage> result;
        engine.enhanceImage(style, picture, nullptr, [&](auto made, auto text) {
            EXPECT_FALSE(text) << *text;
            result = std::move(made);
        });
        return result.value_or(picture);
    }

    WorkerPool pool;
    CallLog log;
    FakeUserDefaults userDefaults{log};
    FakeLocalization localization{log};
    FakeAnalytics analytics{log};
    ErrorStreamConsole console{localization};
    ResourceBundle bundle{std::filesystem::path(QUILLMERE_MODELS_DIR).parent_path()};
    DesktopDispatch dispatch;
    DesktopGraphics graphics;
    DesktopCoreImage coreImage{pool};
    neural::NetworkCache networks{pool};
    DesktopCoreML coreML{networks};
    DesktopVision vision{coreImage};
    ModelCatalogue catalogue{coreML, bundle};
    TileEngine engine{{userDefaults, graphics, coreImage, vision, catalogue, dispatch, analytics,
                       localization, console}};
};

void expectSame(const UIImage& result, const Bitmap& expected) {
    ASSERT_EQ(result.cgImage()->size(), (PixelSize{expected.width, expected.height}));
    for (int y = 0; y < expected.height; ++y) {
        const std::uint8_t* row = result.cgImage()->row(y);
        const auto [differs, from] =
            std::mismatch(row, row + expected.width * 4, expected.at(0, y));
        ASSERT_EQ(differs, row + expected.width * 4)
            << "at " << (differs - row) / 4 << ", " << y << ": " << int{*differs} << ", not "
            << int{*from};
    }
}

TEST_F(WholePicture, IsStitchedFromItsTilesExactly) {
    for (const auto& [width, height] : {std::pair{300, 260}, {13, 250}}) {
        const Bitmap source = makeSource(width, height);
        expectSame(enhance(EnhanceStyle::speedAnime, source),
                   evaluatePlainly(source, "real256_anime_8"));
    }
}

TEST_F(WholePicture, HighIsTheHalvedMean) {
    const Bitmap source = makeSource(40, 20);
    const Bitmap full = evaluatePlainly(source, "bsrgan8");
    Bitmap half(80, 40);
    for (int y = 0; y < half.height; ++y) {
        for (int x = 0; x < half.width; ++x) {
            for (int c = 0; c < 4; ++c) {
                const int sum = full.at(2 * x, 2 * y)[c] + full.at(2 * x + 1, 2 * y)[c] +
                                full.at(2 * x, 2 * y + 1)[c] + full.at(2 * x + 1, 2 * y + 1)[c];
                half.at(x, y)[c] = static_cast<std::uint8_t>((sum + 2) / 4);
            }
        }
    }
    expectSame(enhance(EnhanceStyle::high, source), half);
}

TEST_F(WholePicture, ANetworkThatIsNoneIsCodeSix) {
    class Foreign final : public MLModel {
        Result<MLFeatureProviderRef> predictionFromFeatures(const MLFeatureProvider&) override {
            return Error{};
        }
    };
    EXPECT_FALSE(vision.modelForMLModel(std::make_shared<Foreign>()));
}

}  // namespace
}  // namespace quillmere
