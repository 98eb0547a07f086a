#include "Desktop/Photos/FileItemProvider.h"

#include <system_error>
#include <utility>

#include "Desktop/Photos/UniformType.h"

namespace quillmere {
namespace {

constexpr const char* errorDomain = "quillmere.photos";
enum ErrorCode { otherType = 1, fileIsGone = 2 };

}  // namespace

bool FileItemProvider::hasItemConformingToTypeIdentifier(std::string_view typeIdentifier) const {
    return conforms(typeIdentifier_, kind_, typeIdentifier);
}

template <class Load, class Handler>
void FileItemProvider::answer(std::string_view typeIdentifier, Load load, Handler handler) {
    const bool conforming = hasItemConformingToTypeIdentifier(typeIdentifier);
    ports_.dispatch.globalQueue(QualityOfService::userInitiated)
        .async([self = shared_from_this(), conforming, load = std::move(load),
                handler = std::move(handler)] {
            if (conforming) return handler(load(*self));
            handler(Error{errorDomain,
                          otherType,
                          "%@ can't be had in the form that is needed.",
                          {self->file_.string()}});
        });
}

void FileItemProvider::loadDataRepresentationForTypeIdentifier(std::string_view typeIdentifier,
                                                               DataHandler completionHandler) {
    answer(
        typeIdentifier,
        [](FileItemProvider& self) { return self.ports_.fileManager.contentsOfFile(self.file_); },
        std::move(completionHandler));
}

void FileItemProvider::loadFileRepresentationForTypeIdentifier(std::string_view typeIdentifier,
                                                               FileHandler completionHandler) {
    answer(
        typeIdentifier,
        [](FileItemProvider& self) -> Result<std::filesystem::path> {
            std::error_code ignored;
            if (std::filesystem::is_regular_file(self.file_, ignored)) return self.file_;
            return Error{errorDomain,
                         fileIsGone,
                         "The file %@ is not there any more.",
                         {self.file_.string()}};
        },
        std::move(completionHandler));
}

void FileItemProvider::loadObjectOfClassUIImage(ImageHandler completionHandler) {
    answer(
        UTTypeImage,
        [](FileItemProvider& self) -> Result<UIImage> {
            const auto contents = self.ports_.fileManager.contentsOfFile(self.file_);
            if (!contents) return contents.error();
            return self.ports_.imageIO.imageWithData(*contents);
        },
        std::move(completionHandler));
}

}  // namespace quillmere
