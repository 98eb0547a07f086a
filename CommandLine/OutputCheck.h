// What would make the work for a result vain.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "Base/Result.h"

namespace quillmere::cli {

/// A sentence for the user that says why a result can't have its name.
Error outputRefusal(std::string sentence, std::vector<std::string> values);

/// Fails where `output` exists and may not be replaced, where it is one of the inputs or a folder,
/// and where its folder is missing or refuses writing.
Result<void> checkOutput(const std::filesystem::path& output,
                         const std::vector<std::filesystem::path>& inputs, bool mayReplace);

}  // namespace quillmere::cli
