// What the figures were taken on.
#pragma once

#include <cstddef>

namespace quillmere::benchmark {

/// Prints the processor, the threads in use, the versions of what is compared, and how busy the
/// machine is with other work.
void describeMachine(std::size_t threads);

}  // namespace quillmere::benchmark
