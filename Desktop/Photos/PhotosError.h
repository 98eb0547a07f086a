// Why something was not saved, as a user is told.
#pragma once

#include <filesystem>

#include "Base/Result.h"

namespace quillmere {

/// Of a file that can't be put into `folder`: access refused and no space in the domain of the
/// photo library, other reasons with the system's error number.
Error savingFailure(int number, const std::filesystem::path& folder);

/// Of the catalogue's failure to take a new asset.
Error savingFailure(const Error& catalogue);

/// What was to become an asset is none.
Error invalidResource(const char* sentence);

}  // namespace quillmere
