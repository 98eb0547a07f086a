// The one process-wide start of libvips.
#pragma once

namespace quillmere {

/// Call before any use of libvips on a thread; false if the library can't be started.
///
/// Starts it once, silent, without its cache of results and without its modules, and sees to it
/// that what libvips keeps for this thread goes with the thread. Any thread.
bool startVips();

/// Decoders that libvips keeps in modules of their own, for HEIC and AVIF and for JPEG XL.
enum class VipsModule { heif, jxl };

/// Loads a module once, after `startVips`. Where there is none, its formats can't be read. Any
/// thread.
void loadVipsModule(VipsModule module);

/// Forgets the library's own account of a failure, which all threads share and nobody reads.
void forgetVipsErrors();

}  // namespace quillmere
