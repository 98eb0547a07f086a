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
            return {PHPhotosErrorDomain, PHPhotosErrorAccessUserDenied,
                    "The folder " + folder.string() +
                        " refuses new files. Allow writing there, and save again."};
        case ENOSPC:
        case EDQUOT:
            return {PHPhotosErrorDomain, PHPhotosErrorNotEnoughSpace,
                    "There is no space left in " + folder.string() +
                        ". Free some space, and save again."};
        default:
            return {FileManager::posixErrorDomain, number,
                    "Nothing can be saved in " + folder.string() + ": " +
                        std::generic_category().message(number) + "."};
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
