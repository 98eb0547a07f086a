// What a video will become, found out before the work.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Base/Geometry.h"
#include "Base/Result.h"
#include "CommandLine/Options.h"
#include "Desktop/AVFoundation/MovieSurvey.h"
#include "Desktop/DesktopPlatform.h"
#include "Quillmere/Models/Enhance/TileEngine.h"
#include "Quillmere/Models/Video/VideoProcessor.h"

namespace quillmere::cli {

struct VideoPlan {
    AVAssetRef asset;
    Size natural;      // of stored frames, in pixels
    Size output;       // what the processor is asked for
    PixelSize source;  // upright, as the next
    PixelSize result;
    VideoProcessor::Mode mode;
    MovieSurvey survey;
    double duration = 0;  // in seconds; 0 where the file doesn't say
    /// To enlarge one frame by a network, next to which the rest is little; nothing for other
    /// styles, whose time goes into the decoding and encoding.
    std::optional<double> secondsPerFrame;
    /// What the result will be without, each as a user reads it: "2 subtitle tracks".
    std::vector<std::string> notKept;
};

/// What makes plans needs of the program.
struct VideoPlanPorts {
    DesktopPlatform& platform;
    AVFoundation& avFoundation;
    TileEngine& engine;
    const ModelCatalogue& catalogue;
    Console& console;
};

/// Reads and enlarges the first frame; blocks for that long. Not on the main thread. Fails, with a
/// sentence for the user, for what is no video and for what the style can't enlarge.
Result<VideoPlan> planVideo(const VideoPlanPorts& ports, const VideoOptions& options);

}  // namespace quillmere::cli
