// What the warm-up at start saves the first conversion.
#pragma once

#include <string>

namespace quillmere::benchmark {

inline constexpr const char* kFirstConversionMode = "--first-conversion";

/// Enlarges the sample picture by the style `high`, after the warm-up if `start` is "warm", and
/// prints the seconds from the conversion's start to its end. The exit code.
int convertFirst(const std::string& start);

}  // namespace quillmere::benchmark
