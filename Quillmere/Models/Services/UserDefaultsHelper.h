// The format of saved pictures, as the user chose it.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "Platform/UserDefaults/UserDefaults.h"

namespace quillmere {

struct UserDefaultsHelper {
    /// The raw values are what is stored.
    enum class ImageFormat : std::int64_t { jpg = 0, heic = 1, png = 2 };

    /// In the order of the rows that a user chooses from.
    static constexpr std::array allImageFormats{ImageFormat::jpg, ImageFormat::heic,
                                                ImageFormat::png};

    /// Nothing outside 0 to 2.
    static std::optional<ImageFormat> imageFormatWithRawValue(std::int64_t rawValue);

    /// The stored choice at this moment; `jpg` for a stored value that is no format. Any thread.
    static ImageFormat imageFormat(const UserDefaults& userDefaults);
};

}  // namespace quillmere
