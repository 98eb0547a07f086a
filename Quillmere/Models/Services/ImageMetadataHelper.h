// When and where a picture was taken, carried from its source into the file of its enlargement.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "Base/Date.h"
#include "Platform/ImageIO/ImageMetadata.h"
#include "Platform/Localization/DateFormatter.h"
#include "Platform/Photos/Location.h"
#include "Quillmere/Models/Services/UserDefaultsHelper.h"

namespace quillmere {

struct ImageMetadataHelper {
    /// What the photo library knows of a source. The source's own file is not asked.
    struct OriginalMetadata {
        std::optional<Date> creationDate;
        std::optional<Location> location;
    };

    /// What an encoded picture is written with.
    struct Platform {
        ImageMetadata& imageMetadata;
        const DateFormatter& dateFormatter;
    };

    /// The encoded picture `data` with the date and the place in its metadata tables; what is
    /// absent is left as it is. The date is told in the user's time zone, the time of the place in
    /// UTC. Whatever goes wrong, the answer is `data`: a picture without tables is better than
    /// none. Any thread.
    static std::vector<std::byte> embedMetadata(std::vector<std::byte> data,
                                                std::optional<Date> creationDate,
                                                const std::optional<Location>& location,
                                                UserDefaultsHelper::ImageFormat format,
                                                const Platform& platform);

    /// The system's name of the format.
    static std::string_view typeIdentifier(UserDefaultsHelper::ImageFormat format);
};

}  // namespace quillmere
