// What a movie file holds beside the picture and the sound that go through the ports.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

namespace quillmere {

/// So that a user can be told what an enlarged movie will be without.
struct MovieSurvey {
    int videoTracks = 0;  // pictures attached to sound left out
    int audioTracks = 0;
    int subtitleTracks = 0;
    int otherTracks = 0;  // data, attached files and pictures
    int chapters = 0;
    int audioChannels = 0;  // of the first audio track
    // Of the first video track.
    int bitsPerChannel = 8;
    bool isHighDynamicRange = false;
    bool isTransparent = false;
    /// As the file says, or as its length and rate give; 0 where neither is known.
    std::int64_t frames = 0;
    bool hasDate = false;
    bool hasPlace = false;
};

/// Nothing for a file that is no movie, or can't be read. Any thread.
std::optional<MovieSurvey> surveyMovie(const std::filesystem::path& file);

}  // namespace quillmere
