// The part of the section `load` that runs in a process of its own.
#pragma once

#include <string>

namespace quillmere::benchmark {

inline constexpr const char* kLoadingMode = "--load";

/// Loads the compiled network in `directory` once, and then again with nothing left of the first
/// but what the process keeps; prints both times in seconds. The exit code.
int loadTwice(const std::string& directory);

}  // namespace quillmere::benchmark
