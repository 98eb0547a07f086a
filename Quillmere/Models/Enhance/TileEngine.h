// Where every enlargement enters the application: one picture in, one enlarged picture out.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "Platform/Analytics/Analytics.h"
#include "Platform/Application/Console.h"
#include "Platform/CoreImage/CoreImage.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Graphics/Graphics.h"
#include "Platform/Localization/Localization.h"
#include "Platform/UserDefaults/UserDefaults.h"
#include "Platform/Vision/Vision.h"
#include "Quillmere/Models/Enhance/EnhanceStyle.h"
#include "Quillmere/Models/Enhance/ModelCatalogue.h"
#include "Quillmere/Models/Enhance/TilePlan.h"

namespace quillmere {

/// Cuts a picture into tiles, runs each through the style's network and stitches the outputs.
///
/// Operations may be called from any thread; runs may overlap and share nothing but the context.
/// A run can't be stopped. A tile that fails is reported and skipped, and the run goes on.
class TileEngine {
public:
    struct Ports {
        const UserDefaults& userDefaults;
        Graphics& graphics;
        CoreImage& coreImage;
        Vision& vision;
        const ModelCatalogue& catalogue;
        Dispatch& dispatch;
        Analytics& analytics;
        const Localization& localization;
        Console& console;
    };

    /// Called on the main queue with the fraction of the tiles that are done, in 0 to 1; it may
    /// come after the run has returned. May be empty.
    using Progress = std::function<void(float fraction)>;

    /// A picture and no text is the result; a text and no picture is a failure to show; neither is
    /// a silent end. Called on the thread of the run: once for each failed tile, and once at the
    /// end, so that a picture with holes may follow failures.
    using Completion =
        std::function<void(std::optional<UIImage> picture, std::optional<std::string> text)>;

    explicit TileEngine(const Ports& ports) : ports_(ports) {}

    /// Blocks the calling thread, which must not be that of the main queue, until the run is over.
    /// The working picture's longer side is brought down to the stored resolution limit first.
    void enhanceImage(EnhanceStyle style, const UIImage& image, const Progress& progress,
                      const Completion& completion);

    /// A picture whose longer side is at most `maxDimension` points: the same picture where it
    /// fits, otherwise redrawn at scale 1 with sides rounded to whole points.
    UIImage resizeImage(const UIImage& image, double maxDimension);

    /// Records that a conversion failed with `code` and gives the text for the user.
    ///
    /// | code | cause                                             |
    /// |------|---------------------------------------------------|
    /// | 1    | a tile's canvas gave no image                     |
    /// | 2    | no lazy image could be made from a tile           |
    /// | 3    | there is nothing to render                        |
    /// | 4    | the stitched picture could not be rendered        |
    /// | 5    | the network failed on a tile                      |
    /// | 6    | the network doesn't take and give a picture       |
    std::string failedToConvertMessage(int code);

    /// The one rendering context of the process, made at its first use.
    CIContext& sharedCIContext();

private:
    struct Run;

    UIImage uprightPicture(const UIImage& image);
    void runTile(Run& run, const Tile& tile);
    std::optional<UIImage> drawTile(const UIImage& working, const Tile& tile);
    std::optional<UIImage> finish(Run& run, EnhanceStyle style, const TilePlan& plan);

    Ports ports_;
    std::once_flag contextOnce_;
    std::unique_ptr<CIContext> context_;
};

/// `enhanceImage` of an engine, for those who need no more of it.
using EnhanceImage = std::function<void(EnhanceStyle, const UIImage&, const TileEngine::Progress&,
                                        const TileEngine::Completion&)>;

}  // namespace quillmere
