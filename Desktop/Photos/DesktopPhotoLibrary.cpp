#include "Desktop/Photos/DesktopPhotoLibrary.h"

#include <sys/stat.h>

#include <string_view>
#include <system_error>
#include <utility>

#include "Desktop/Photos/AssetSaver.h"
#include "Desktop/Photos/CatalogueFile.h"
#include "Desktop/Photos/FileItemProvider.h"
#include "Desktop/Photos/LibraryKeeper.h"

namespace quillmere {
namespace fs = std::filesystem;
namespace {

constexpr std::string_view plainFileMark = "file:";

LibraryAsset assetOf(CatalogueEntry entry) {
    FileRecord& record = entry.record;
    return {{std::move(entry.identifier), record.mediaType, record.pixelSize, record.creationDate,
             record.location},
            std::move(entry.path),
            std::move(record.typeIdentifier)};
}

}  // namespace

DesktopPhotoLibrary::DesktopPhotoLibrary(Ports ports, MediaFolders folders,
                                         std::optional<fs::path> dataFolder, FileRecordReader read)
    : ports_(ports),
      folders_(std::move(folders)),
      read_(std::move(read)),
      catalogue_(std::make_unique<CatalogueFile>(std::move(dataFolder), ports.console)),
      saver_(std::make_unique<AssetSaver>(folders_, *catalogue_, ports.imageIO, read_)) {
    catalogue_->onBeginningAnew([this] {
        const std::lock_guard lock(mutex_);
        if (keeper_) keeper_->scanSoon();
    });
}

DesktopPhotoLibrary::~DesktopPhotoLibrary() {
    std::unique_ptr<LibraryKeeper> keeper;
    std::shared_ptr<DispatchQueue> changes;
    {
        const std::lock_guard lock(mutex_);
        keeper = std::move(keeper_);
        changes = std::move(changes_);
    }
    if (!changes) return;
    const auto drained = ports_.dispatch.makeSemaphore(0);
    changes->async([drained] { drained->signal(); });
    drained->wait();
}

void DesktopPhotoLibrary::cleanUpOnce() {
    std::call_once(cleanedUp_, [this] { saver_->cleanUp(); });
}

DispatchQueue& DesktopPhotoLibrary::changes() {
    const std::lock_guard lock(mutex_);
    if (!changes_) {
        changes_ = ports_.dispatch.makeSerialQueue("photo changes", QualityOfService::standard);
    }
    return *changes_;
}

LibraryKeeper& DesktopPhotoLibrary::keeper() {
    const std::lock_guard lock(mutex_);
    if (!keeper_) {
        keeper_ = std::make_unique<LibraryKeeper>(std::vector{folders_.pictures, folders_.videos},
                                                  *catalogue_, read_, ports_.console,
                                                  [this] { cleanUpOnce(); });
    }
    return *keeper_;
}

void DesktopPhotoLibrary::save(std::function<std::vector<NewAsset>()> describe,
                               std::function<void(const Result<void>& done)> finished) {
    changes().async([this, describe = std::move(describe), finished = std::move(finished)] {
        const std::vector<NewAsset> assets = describe();
        cleanUpOnce();
        finished(saver_->save(assets));
    });
}

void DesktopPhotoLibrary::performChanges(ChangeBlock changeBlock,
                                         CompletionHandler completionHandler) {
    save(
        [block = std::move(changeBlock)] {
            NewAssets asked;
            block(asked);
            return asked.take();
        },
        [this, handler = std::move(completionHandler)](const Result<void>& done) {
            ports_.dispatch.globalQueue(QualityOfService::utility).async([handler, done] {
                handler(static_cast<bool>(done), done ? std::nullopt : std::optional(done.error()));
            });
        });
}

void DesktopPhotoLibrary::UISaveVideoAtPathToSavedPhotosAlbum(const fs::path& path,
                                                              SavedHandler completionHandler) {
    save(
        [path] {
            return std::vector{NewAsset{NewAsset::File{path, false}, {}, {}}};
        },
        [this, handler = std::move(completionHandler)](const Result<void>& done) {
            ports_.dispatch.mainQueue().async(
                [handler, done] { handler(done ? std::nullopt : std::optional(done.error())); });
        });
}

std::vector<PHAsset> DesktopPhotoLibrary::fetchAssetsWithLocalIdentifiers(
    const std::vector<std::string>& identifiers) {
    std::vector<PHAsset> found;
    for (const std::string& identifier : identifiers) {
        auto asset = assetWithIdentifier(identifier);
        if (asset && *asset) found.push_back(std::move((*asset)->asset));
    }
    return found;
}

Result<std::vector<LibraryAsset>> DesktopPhotoLibrary::assets(std::optional<PHAssetMediaType> kind,
                                                              std::size_t first,
                                                              std::size_t count) {
    keeper();
    auto entries =
        catalogue_->use([&](Catalogue& catalogue) { return catalogue.newest(kind, first, count); });
    if (!entries) return entries.error();
    std::vector<LibraryAsset> assets;
    assets.reserve(entries->size());
    for (CatalogueEntry& entry : *entries) assets.push_back(assetOf(std::move(entry)));
    return assets;
}

Result<std::size_t> DesktopPhotoLibrary::count(std::optional<PHAssetMediaType> kind) {
    keeper();
    return catalogue_->use([&](Catalogue& catalogue) { return catalogue.count(kind); });
}

Result<std::optional<LibraryAsset>> DesktopPhotoLibrary::assetWithIdentifier(
    const std::string& identifier) {
    if (identifier.starts_with(plainFileMark)) return plainFile(identifier);
    keeper();
    auto entry =
        catalogue_->use([&](Catalogue& catalogue) { return catalogue.withIdentifier(identifier); });
    if (!entry) return entry.error();
    return *entry ? std::optional(assetOf(**std::move(entry))) : std::nullopt;
}

Result<void> DesktopPhotoLibrary::scan() { return keeper().scan(); }

std::string DesktopPhotoLibrary::identifierForFile(const fs::path& path) {
    std::error_code failed;
    const fs::path absolute = fs::absolute(path, failed);
    return std::string(plainFileMark) + (failed ? path : absolute).string();
}

std::optional<LibraryAsset> DesktopPhotoLibrary::plainFile(const std::string& identifier) const {
    const fs::path path = identifier.substr(plainFileMark.size());
    struct stat status {};
    if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
    auto record = read_(path);
    if (!record) return std::nullopt;
    CatalogueEntry entry = makeEntry(path, stampOf(status), *std::move(record));
    entry.identifier = identifier;
    return assetOf(std::move(entry));
}

std::optional<PHPickerResult> DesktopPhotoLibrary::pickerResultForAsset(
    const std::string& identifier) {
    const auto asset = assetWithIdentifier(identifier);
    if (!asset || !*asset) return std::nullopt;
    return pickerResult(**asset, identifier);
}

std::optional<PHPickerResult> DesktopPhotoLibrary::pickerResultForFile(const fs::path& path) {
    const auto asset = plainFile(identifierForFile(path));
    if (!asset) return std::nullopt;
    return pickerResult(*asset, std::nullopt);
}

PHPickerResult DesktopPhotoLibrary::pickerResult(const LibraryAsset& asset,
                                                 std::optional<std::string> identifier) const {
    const FileItemProvider::Ports ports{ports_.dispatch, ports_.fileManager, ports_.imageIO};
    return {std::move(identifier),
            std::make_shared<FileItemProvider>(ports, asset.path, asset.asset.mediaType,
                                               asset.typeIdentifier)};
}

}  // namespace quillmere
