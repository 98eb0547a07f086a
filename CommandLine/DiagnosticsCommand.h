// `quillmere-cli diagnostics`: what the last runs left for whoever looks for a fault.
#pragma once

#include <filesystem>
#include <optional>

#include "Base/Result.h"
#include "CommandLine/Options.h"

namespace quillmere::cli {

/// Prints where the record of events lies, and the last runs with their breadcrumbs, the newest
/// last. `folder` is the application's for state. Fails where there is none.
Result<void> showDiagnostics(const DiagnosticsOptions& options,
                             const std::optional<std::filesystem::path>& folder);

}  // namespace quillmere::cli
