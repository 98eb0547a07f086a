// `quillmere-cli settings`: what is stored of the user's choices, and changing it.
#pragma once

#include "CommandLine/Options.h"
#include "Desktop/UserDefaults/DesktopUserDefaults.h"

namespace quillmere::cli {

/// Prints settings to standard output, or stores one; gives the exit code, which is 1 for a value
/// that could not be stored. The console has told why.
int runSettings(const SettingsOptions& options, DesktopUserDefaults& userDefaults);

}  // namespace quillmere::cli
