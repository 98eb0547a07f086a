// One item that the user picked.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "Platform/Photos/NSItemProvider.h"

namespace quillmere {

struct PHPickerResult {
    /// Of the library's record; nothing for what came from elsewhere, of which nothing is kept.
    std::optional<std::string> assetIdentifier;
    std::shared_ptr<NSItemProvider> itemProvider;  // never null
};

}  // namespace quillmere
