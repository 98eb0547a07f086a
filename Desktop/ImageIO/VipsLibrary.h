// The one process-wide start of libvips.
#pragma once

namespace quillmere {

/// Call before any use of libvips on a thread; false if the library can't be started.
///
/// Starts it once, silent and without its cache of results, and sees to it that what libvips keeps
/// for this thread goes with the thread. Any thread.
bool startVips();

/// Forgets the library's own account of a failure, which all threads share and nobody reads.
void forgetVipsErrors();

}  // namespace quillmere
