#include "CommandLine/LibrarySave.h"

#include <optional>

#include "Quillmere/Models/Services/AssetRequest.h"

namespace quillmere::cli {

Result<void> saveToLibrary(DesktopPlatform& platform, const UIImage& picture, PictureFormat format,
                           const ImageMetadataHelper::OriginalMetadata& kept) {
    DesktopPhotoLibrary* library = platform.photoLibrary();
    if (!library) {
        return Error{"quillmere.commandline", 1,
                     "There is no photo library: this user has no home folder. Name a file or "
                     "folder with -o instead of --library."};
    }
    const auto done = platform.dispatch().makeSemaphore(0);
    Result<void> outcome;
    library->performChanges(
        [&](PHChanges& changes) {
            makeAssetRequest(changes, platform.imageIO(),
                             {platform.imageMetadata(), platform.dateFormatter()}, format, picture,
                             kept.creationDate, kept.location);
        },
        [&](bool success, const std::optional<Error>& error) {
            if (!success) {
                outcome =
                    Error{error ? error->domain : PHPhotosErrorDomain, error ? error->code : 0,
                          saveFailureMessage(error, platform.localization())};
            }
            done->signal();
        });
    done->wait();
    return outcome;
}

}  // namespace quillmere::cli
