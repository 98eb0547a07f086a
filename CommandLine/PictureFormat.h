// The formats that results are written in.
#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

#include "Quillmere/Models/Services/UserDefaultsHelper.h"

namespace quillmere::cli {

using PictureFormat = UserDefaultsHelper::ImageFormat;

/// Its name on the command line, which is also its file extension.
std::string_view formatName(PictureFormat format);

/// The format of that name; nothing where there is none.
std::optional<PictureFormat> formatNamed(std::string_view name);

/// The format that a file name's extension asks for (jpg, jpeg, heic, heif, png, in any case);
/// nothing for another one or none.
std::optional<PictureFormat> formatOfExtension(const std::filesystem::path& file);

}  // namespace quillmere::cli
