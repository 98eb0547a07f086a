// The part of the program that knows movies, loaded when a movie is first met.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>

#include "Desktop/AVFoundation/MovieSurvey.h"
#include "Desktop/AVFoundation/MovieTags.h"
#include "Platform/AVFoundation/AVFoundation.h"
#include "Platform/AudioToolbox/AudioToolbox.h"
#include "Platform/Dispatch/Dispatch.h"

namespace quillmere {

/// Loading the FFmpeg libraries takes as long as all the rest of a program's start, and whoever
/// enlarges a picture never needs them.
struct MovieModule {
    std::optional<MovieTags> (*readMovieTags)(const std::filesystem::path& file);
    std::unique_ptr<AVFoundation> (*makeAVFoundation)(Dispatch& dispatch);
    std::unique_ptr<AudioToolbox> (*makeAudioToolbox)();
    std::optional<MovieSurvey> (*surveyMovie)(const std::filesystem::path& file);
};

/// The name under which the module hands itself out.
inline constexpr const char* movieModuleSymbol = "quillmereMovieModule";

/// Loaded at the first call, from `lib/quillmere` beside the program's own folder, or from the
/// folder that the environment names as QUILLMERE_LIBRARY_FOLDER. Null where it is missing. Any
/// thread.
const MovieModule* loadMovieModule();

}  // namespace quillmere
