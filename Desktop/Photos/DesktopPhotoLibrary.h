// The user's folders of pictures and videos as a photo library.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Base/Result.h"
#include "Desktop/Photos/FileRecordReader.h"
#include "Desktop/Photos/MediaFolders.h"
#include "Platform/Application/Console.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/FileManager/FileManager.h"
#include "Platform/ImageIO/ImageIO.h"
#include "Platform/Photos/PHPhotoLibrary.h"
#include "Platform/Photos/PHPickerResult.h"

namespace quillmere {

class AssetSaver;
class CatalogueFile;
class LibraryKeeper;
struct NewAsset;

/// An asset of the library, for those who list it.
struct LibraryAsset {
    PHAsset asset;
    std::filesystem::path path;
    std::string typeIdentifier;  // such as "public.jpeg"
};

/// The files are the truth; `Library.sqlite` in the data folder remembers what they say, and which
/// date and place an asset was given. See `AssetSaver` for how a change is made, `LibraryScanner`
/// for what belongs to the library, and `CatalogueUpdate` for what keeps an asset's identifier.
///
/// Nothing is opened before it is needed. Whoever asks for assets starts the background scan;
/// saving does not. Any thread, and `performChanges` from within handlers too. The end waits for
/// changes that are under way; it must not come on a queue of the library's.
class DesktopPhotoLibrary final : public PHPhotoLibrary {
public:
    struct Ports {
        Dispatch& dispatch;
        FileManager& fileManager;
        ImageIO& imageIO;
        Console& console;
    };
    /// Without `dataFolder` the catalogue lives in memory.
    DesktopPhotoLibrary(Ports ports, MediaFolders folders,
                        std::optional<std::filesystem::path> dataFolder,
                        FileRecordReader read = readFileRecord);
    ~DesktopPhotoLibrary() override;

    void performChanges(ChangeBlock changeBlock, CompletionHandler completionHandler) override;
    void UISaveVideoAtPathToSavedPhotosAlbum(const std::filesystem::path& path,
                                             SavedHandler completionHandler) override;
    /// Identifiers of library assets, and those of plain files. A library that can't be read has
    /// none.
    std::vector<PHAsset> fetchAssetsWithLocalIdentifiers(
        const std::vector<std::string>& identifiers) override;

    /// Newest first, of one kind or both: at most `count` after the first `first`. What the first
    /// scan has not met yet is missing.
    Result<std::vector<LibraryAsset>> assets(std::optional<PHAssetMediaType> kind,
                                             std::size_t first, std::size_t count);
    /// How many of one kind or both it has met so far.
    Result<std::size_t> count(std::optional<PHAssetMediaType> kind);
    /// Of the library or a plain file; nothing where it is unknown.
    Result<std::optional<LibraryAsset>> assetWithIdentifier(const std::string& identifier);
    /// Looks at every file in the folders, and waits until that is done.
    Result<void> scan();

    /// For a file that need not lie in the library: its record is read from its own tags each
    /// time.
    static std::string identifierForFile(const std::filesystem::path& path);

    /// What a picker of the library hands over. Nothing for an asset that is not there.
    std::optional<PHPickerResult> pickerResultForAsset(const std::string& identifier);
    /// What a picker of files hands over: without an identifier, so that nothing of its date and
    /// place is kept. Nothing for a file that is no picture or movie. Takes some milliseconds.
    std::optional<PHPickerResult> pickerResultForFile(const std::filesystem::path& path);

private:
    void save(std::function<std::vector<NewAsset>()> describe,
              std::function<void(const Result<void>& done)> finished);
    void cleanUpOnce();
    DispatchQueue& changes();
    LibraryKeeper& keeper();
    std::optional<LibraryAsset> plainFile(const std::string& identifier) const;
    PHPickerResult pickerResult(const LibraryAsset& asset,
                                std::optional<std::string> identifier) const;

    const Ports ports_;
    const MediaFolders folders_;
    const FileRecordReader read_;
    const std::unique_ptr<CatalogueFile> catalogue_;
    const std::unique_ptr<AssetSaver> saver_;
    std::once_flag cleanedUp_;
    std::mutex mutex_;  // of the two below
    std::shared_ptr<DispatchQueue> changes_;
    std::unique_ptr<LibraryKeeper> keeper_;
};

}  // namespace quillmere
