// The part of the section `picture` that tells the network's time from all the rest.
#pragma once

#include <filesystem>
#include <string>

namespace quillmere::benchmark {

inline constexpr const char* kWatchedMode = "--enlarge-watched";

/// Enlarges `input` to the JPEG file `output` by the same steps as `quillmere-cli enhance`, with a
/// stop-watch around the Vision port, and prints the seconds that were spent inside it. The exit
/// code.
///
/// What is inside: handing a tile to the network and running it, from the call until the enlarged
/// tile is there. What is outside, and so the difference to the time of the whole process: its
/// start, reading and decoding, loading the network, cutting, stitching, encoding and writing.
int enlargeWatched(const std::string& style, const std::filesystem::path& input,
                   const std::filesystem::path& output);

}  // namespace quillmere::benchmark
