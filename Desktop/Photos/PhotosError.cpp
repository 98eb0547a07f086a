#include "Desktop/Photos/PhotosError.h"

#include <cerrno>
#include <string>
#include <system_error>

#include "Desktop/Photos/Database.h"
#include "Platform/FileManager/FileManager.h"
#include "Platform/Photos/PHPhotoLibrary.h"

namespace quillmere {

Error savingFailure(int number, const std::filesystem::path& folder) {
    switch (number) {
        case EACCES:
        case EPERM:
        case EROFS:
            return {PHPhotosErrorDomain,
                    PHPhotosErrorAccessUserDenied,
                    "The folder %@ refuses new files. Allow writing there, and save again.",
                    {folder.string()}};
        case ENOSPC:
        case EDQUOT:
            return {PHPhotosErrorDomain,
                    PHPhotosErrorNotEnoughSpace,
                    "There is no space left in %@. Free some space, and save again.",
                    {folder.string()}};
        default:
            return {FileManager::posixErrorDomain,
                    number,
                    "Nothing can be saved in %@: %@.",
                    {folder.string(), std::generic_category().message(number)}};
    }
}

Error savingFailure(const Error& catalogue) {
    Error error = catalogue;
    if (error.domain != Database::errorDomain) return error;
    if (error.code == Database::full) {
        error.domain = PHPhotosErrorDomain;
        error.code = PHPhotosErrorNotEnoughSpace;
    } else if (error.code == Database::refused) {
        error.domain = PHPhotosErrorDomain;
        error.code = PHPhotosErrorAccessUserDenied;
    }
    return error;
}

Error invalidResource(const char* sentence) {
    return {PHPhotosErrorDomain, PHPhotosErrorInvalidResource, sentence};
}

}  // namespace quillmere
