// A file of the user's as something that was picked.
#pragma once

#include <filesystem>
#include <string>

#include "Platform/Dispatch/Dispatch.h"
#include "Platform/FileManager/FileManager.h"
#include "Platform/ImageIO/ImageIO.h"
#include "Platform/Photos/NSItemProvider.h"
#include "Platform/Photos/PHAsset.h"

namespace quillmere {

/// Handlers run on a global queue. The file representation is the file itself, which is not to be
/// changed. An item of another type than the one asked for is an error, as is a file that has
/// gone; a picture is read when it is asked for, and not before.
class FileItemProvider final : public NSItemProvider,
                               public std::enable_shared_from_this<FileItemProvider> {
public:
    struct Ports {
        Dispatch& dispatch;
        FileManager& fileManager;
        ImageIO& imageIO;
    };
    FileItemProvider(Ports ports, std::filesystem::path file, PHAssetMediaType kind,
                     std::string typeIdentifier)
        : ports_(ports),
          file_(std::move(file)),
          kind_(kind),
          typeIdentifier_(std::move(typeIdentifier)) {}

    std::optional<std::string> suggestedName() const override { return file_.filename().string(); }
    std::vector<std::string> registeredTypeIdentifiers() const override {
        return {typeIdentifier_};
    }
    bool hasItemConformingToTypeIdentifier(std::string_view typeIdentifier) const override;
    void loadDataRepresentationForTypeIdentifier(std::string_view typeIdentifier,
                                                 DataHandler completionHandler) override;
    void loadFileRepresentationForTypeIdentifier(std::string_view typeIdentifier,
                                                 FileHandler completionHandler) override;
    bool canLoadObjectOfClassUIImage() const override { return kind_ == PHAssetMediaType::image; }
    void loadObjectOfClassUIImage(ImageHandler completionHandler) override;

private:
    /// Posts the handler with what `load` gives for an item of the type.
    template <class Load, class Handler>
    void answer(std::string_view typeIdentifier, Load load, Handler handler);

    const Ports ports_;
    const std::filesystem::path file_;
    const PHAssetMediaType kind_;
    const std::string typeIdentifier_;
};

}  // namespace quillmere
