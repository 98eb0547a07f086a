// The user's library of pictures and videos.
#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Base/Result.h"
#include "Platform/Graphics/UIImage.h"
#include "Platform/Photos/PHAsset.h"

namespace quillmere {

/// The errors that the application tells apart, in `PHPhotosErrorDomain`, by the platform's codes.
inline constexpr const char* PHPhotosErrorDomain = "PHPhotosErrorDomain";
inline constexpr int PHPhotosErrorInvalidResource = 3302;
inline constexpr int PHPhotosErrorNotEnoughSpace = 3305;
inline constexpr int PHPhotosErrorAccessUserDenied = 3311;

enum class PHAssetResourceType { photo = 1, video = 2 };

/// A new asset while a change block describes it.
class PHAssetCreationRequest {
public:
    virtual ~PHAssetCreationRequest() = default;

    /// The asset's file, as bytes of the format that the identifier names ("public.jpeg"). The
    /// bytes may go once this returns.
    virtual void addResourceWithType(PHAssetResourceType type, std::span<const std::byte> data,
                                     std::string_view uniformTypeIdentifier) = 0;
    virtual void setCreationDate(Date date) = 0;
    virtual void setLocation(const Location& location) = 0;
};

/// What a change block may do. Requests belong to it and end with it.
class PHChanges {
public:
    virtual ~PHChanges() = default;

    virtual PHAssetCreationRequest& creationRequestForAsset() = 0;
    /// The library encodes the picture in a format of its choice.
    virtual PHAssetCreationRequest& creationRequestForAssetFromImage(const UIImage& image) = 0;
    /// A copy of the file becomes the asset; the file itself stays.
    virtual PHAssetCreationRequest& creationRequestForAssetFromVideoAtFileURL(
        const std::filesystem::path& url) = 0;
};

/// May be called from any thread.
class PHPhotoLibrary {
public:
    using ChangeBlock = std::function<void(PHChanges& changes)>;
    using CompletionHandler = std::function<void(bool success, const std::optional<Error>& error)>;
    using SavedHandler = std::function<void(const std::optional<Error>& error)>;

    virtual ~PHPhotoLibrary() = default;

    /// Runs the block on a queue of the library's own, one block at a time, and then makes all of
    /// what it asked for or nothing of it, however the process may end meanwhile. The handler runs
    /// once, on another queue and never on the main one. A request without a resource, and one
    /// whose file is none, are invalid resources.
    virtual void performChanges(ChangeBlock changeBlock, CompletionHandler completionHandler) = 0;

    /// The older way to save a video: a plain copy, of whatever the file holds. The handler runs
    /// once, on the main queue.
    virtual void UISaveVideoAtPathToSavedPhotosAlbum(const std::filesystem::path& path,
                                                     SavedHandler completionHandler) = 0;

    /// Those that the library has now, in the order of the identifiers.
    virtual std::vector<PHAsset> fetchAssetsWithLocalIdentifiers(
        const std::vector<std::string>& identifiers) = 0;
};

}  // namespace quillmere
