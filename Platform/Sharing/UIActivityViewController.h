// Handing something to other programs or people.
#pragma once

#include <filesystem>
#include <string>
#include <variant>
#include <vector>

#include "Platform/Application/UIApplication.h"
#include "Platform/Graphics/UIImage.h"

namespace quillmere {

/// A text, a picture, or a file.
using ActivityItem = std::variant<std::string, UIImage, std::filesystem::path>;

class UIActivityViewController {
public:
    virtual ~UIActivityViewController() = default;

    /// Shows what this system can do with the items, over `presenter`. Which of it the user takes,
    /// if any, is not told. A file has to stay while they are shown. Main thread.
    virtual void present(std::vector<ActivityItem> items, UIViewController& presenter) = 0;
};

}  // namespace quillmere
