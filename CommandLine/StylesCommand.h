// `quillmere-cli styles`: what there is to choose from.
#pragma once

#include "CommandLine/Options.h"
#include "Platform/Localization/Localization.h"

namespace quillmere::cli {

/// Prints one line a style to standard output; gives the exit code.
int listStyles(const StylesOptions& options, const Localization& localization);

}  // namespace quillmere::cli
