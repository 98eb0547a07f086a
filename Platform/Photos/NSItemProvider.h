// A picked item's contents, which are loaded when somebody wants them.
#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Base/Result.h"
#include "Platform/Graphics/UIImage.h"

namespace quillmere {

/// The system's identifiers of the formats that the application asks for by name.
inline constexpr std::string_view UTTypeWebP = "org.webmproject.webp";
inline constexpr std::string_view UTTypeMovie = "public.movie";

/// May be called from any thread. Each handler runs once, on a thread of the provider's own.
class NSItemProvider {
public:
    using DataHandler = std::function<void(const Result<std::vector<std::byte>>& data)>;
    using ImageHandler = std::function<void(const Result<UIImage>& image)>;
    using FileHandler = std::function<void(const Result<std::filesystem::path>& url)>;

    virtual ~NSItemProvider() = default;

    /// What its file is called; nothing for what is no file.
    virtual std::optional<std::string> suggestedName() const = 0;

    /// The formats in which the item can be had as it is, the best one first.
    virtual std::vector<std::string> registeredTypeIdentifiers() const = 0;
    virtual bool hasItemConformingToTypeIdentifier(std::string_view typeIdentifier) const = 0;
    virtual void loadDataRepresentationForTypeIdentifier(std::string_view typeIdentifier,
                                                         DataHandler completionHandler) = 0;
    /// The file is there until the handler returns; whoever wants to keep it copies it meanwhile.
    virtual void loadFileRepresentationForTypeIdentifier(std::string_view typeIdentifier,
                                                         FileHandler completionHandler) = 0;

    /// Whether the item can be had as a picture.
    virtual bool canLoadObjectOfClassUIImage() const = 0;
    virtual void loadObjectOfClassUIImage(ImageHandler completionHandler) = 0;
};

}  // namespace quillmere
