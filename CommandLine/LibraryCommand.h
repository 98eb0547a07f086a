// `quillmere-cli library`: what the photo library holds.
#pragma once

#include "CommandLine/Options.h"
#include "Desktop/DesktopPlatform.h"

namespace quillmere::cli {

/// Looks at the library's files first, so that what is told is what is there. The exit code: 1 for
/// an unknown identifier and a library that can't be read, which has been told.
int runLibrary(const LibraryOptions& options, DesktopPlatform& platform);

}  // namespace quillmere::cli
