#include "Desktop/Photos/AssetSaver.h"

#include <fcntl.h>

#include <cerrno>
#include <string>

#include "Desktop/Photos/PhotosError.h"
#include "Desktop/Photos/UniformType.h"

namespace quillmere {
namespace fs = std::filesystem;
namespace {

constexpr const char* folderName = "Quillmere";
constexpr double jpegQuality = 0.9;
// Somebody else takes the very name that was free a moment ago: that is rare once.
constexpr int attempts = 10;

void flushFolder(const fs::path& folder) {
    const FileDescriptor opened(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened.isOpen()) fsync(opened.number());
}

bool isWhatWasPlanned(const PlannedFile& file) {
    const auto stamp = stampOf(file.path);
    return stamp && stamp->inode == file.inode;
}

/// What was given wins over what the file says.
void give(CatalogueEntry& entry, const std::optional<Date>& date,
          const std::optional<Location>& location) {
    if (date) {
        entry.record.creationDate = date;
        entry.dateIsGiven = true;
    }
    if (location) {
        entry.record.location = location;
        entry.locationIsGiven = true;
    }
}

std::string endingOf(const fs::path& source) {
    return mayBePictureOrMovie(source) ? source.extension().string() : ".mov";
}

}  // namespace

AssetSaver::AssetSaver(MediaFolders folders, CatalogueFile& catalogue, ImageIO& imageIO,
                       FileRecordReader read)
    : pictures_(folders.pictures / folderName),
      videos_(folders.videos / folderName),
      catalogue_(catalogue),
      imageIO_(imageIO),
      read_(std::move(read)) {}

Result<void> AssetSaver::save(const std::vector<NewAsset>& assets) {
    if (assets.empty()) return {};
    const FileDescriptor lock = catalogue_.lockForChange(true);
    for (int attempt = 0; attempt < attempts; ++attempt) {
        std::vector<Prepared> files;
        std::set<fs::path> paths;
        for (const NewAsset& asset : assets) {
            auto prepared = prepare(asset, paths);
            if (!prepared) return prepared.error();
            paths.insert(prepared->file->path());
            files.push_back(*std::move(prepared));
        }
        const auto committed = commit(files);
        if (!committed) return committed.error();
        if (*committed) return {};
    }
    return savingFailure(EEXIST, pictures_);
}

Result<AssetSaver::Prepared> AssetSaver::prepare(const NewAsset& asset,
                                                 const std::set<fs::path>& others) {
    if (const auto* resource = std::get_if<NewAsset::Resource>(&asset.source)) {
        if (resource->type != PHAssetResourceType::photo) {
            return invalidResource("A video can only be added as a file.");
        }
        return prepareBytes(asset, resource->bytes, resource->typeIdentifier, others);
    }
    if (const auto* image = std::get_if<UIImage>(&asset.source)) {
        if (const auto jpeg = imageIO_.jpegRepresentation(*image, jpegQuality)) {
            return prepareBytes(asset, *jpeg, UTTypeJPEG, others);
        }
        const auto png = imageIO_.pngRepresentation(*image);
        if (!png) return invalidResource("The picture can't be encoded as JPEG or PNG.");
        return prepareBytes(asset, *png, UTTypePNG, others);
    }
    if (const auto* file = std::get_if<NewAsset::File>(&asset.source)) {
        return prepareFile(asset, *file, others);
    }
    return invalidResource("There is nothing to add: the new asset has no picture or video.");
}

Result<AssetSaver::Prepared> AssetSaver::prepareBytes(const NewAsset& asset,
                                                      std::span<const std::byte> bytes,
                                                      std::string_view type,
                                                      const std::set<fs::path>& others) {
    const std::string_view ending = endingOfType(type);
    if (ending.empty()) return invalidResource("The picture has a format that is not supported.");
    if (const int failed = makeFolders(pictures_)) return savingFailure(failed, pictures_);
    auto file = std::make_unique<NewFile>(freeName(pictures_, ending, others));
    int failed = file->writeBytes(bytes);
    if (failed == 0) failed = file->complete(asset.creationDate);
    if (failed != 0) return savingFailure(failed, pictures_);
    auto record = read_(file->pathOfContents());
    if (!record || record->mediaType != PHAssetMediaType::image) {
        return invalidResource("The picture is damaged and is not saved.");
    }
    auto entry = makeEntry(file->path(), file->stamp(), *std::move(record));
    give(entry, asset.creationDate, asset.location);
    return Prepared{std::move(file), std::move(entry)};
}

Result<AssetSaver::Prepared> AssetSaver::prepareFile(const NewAsset& asset,
                                                     const NewAsset::File& source,
                                                     const std::set<fs::path>& others) {
    auto record = read_(source.path);
    if (record && record->mediaType != PHAssetMediaType::video) record.reset();
    if (!record && source.mustBeMovie) {
        return invalidResource("The file is no video that can be read.");
    }
    if (const int failed = makeFolders(videos_)) return savingFailure(failed, videos_);
    auto file = std::make_unique<NewFile>(freeName(videos_, endingOf(source.path), others));
    int failed = file->copyOf(source.path);
    if (failed == 0) failed = file->complete(asset.creationDate);
    if (failed != 0) return savingFailure(failed, videos_);
    Prepared prepared{std::move(file), std::nullopt};
    if (record) {
        prepared.entry =
            makeEntry(prepared.file->path(), prepared.file->stamp(), *std::move(record));
        give(*prepared.entry, asset.creationDate, asset.location);
    }
    return prepared;
}

Result<bool> AssetSaver::commit(std::vector<Prepared>& files) {
    // Of a process that died since this one started.
    if (const auto settled = settlePlan(); !settled) return savingFailure(settled.error());

    std::vector<PlannedFile> plan;
    std::vector<CatalogueEntry> entries;
    std::set<fs::path> folders;
    for (const Prepared& file : files) {
        PlannedFile planned{file.file->path(), file.file->stamp().inode, {}, {}};
        if (file.entry) {
            if (file.entry->dateIsGiven) planned.creationDate = file.entry->record.creationDate;
            if (file.entry->locationIsGiven) planned.location = file.entry->record.location;
            entries.push_back(*file.entry);
        }
        plan.push_back(std::move(planned));
        folders.insert(file.file->path().parent_path());
    }
    const auto planned = catalogue_.use([&](Catalogue& catalogue) { return catalogue.plan(plan); });
    if (!planned) return savingFailure(planned.error());

    const auto takeBack = [&](std::size_t named) {
        for (std::size_t i = 0; i < named; ++i) unlink(files[i].file->path().c_str());
        // If that fails, the next change or start drops it.
        (void)catalogue_.use([](Catalogue& catalogue) { return catalogue.dropPlan(); });
    };
    for (std::size_t i = 0; i < files.size(); ++i) {
        const int failed = files[i].file->name();
        if (failed == 0) continue;
        takeBack(i);
        if (failed == EEXIST) return false;
        return savingFailure(failed, files[i].file->path().parent_path());
    }
    for (const fs::path& folder : folders) flushFolder(folder);
    const auto done =
        catalogue_.use([&](Catalogue& catalogue) { return catalogue.fulfilPlan(entries); });
    if (!done) {
        takeBack(files.size());
        return savingFailure(done.error());
    }
    return true;
}

void AssetSaver::cleanUp() {
    removeLeftovers(pictures_);
    removeLeftovers(videos_);
    const FileDescriptor lock = catalogue_.lockForChange(false);
    if (catalogue_.needsLock() && !lock.isOpen()) return;
    // What can't be settled now is settled before the next change.
    (void)settlePlan();
}

Result<void> AssetSaver::settlePlan() {
    const auto plan = catalogue_.use([](Catalogue& catalogue) { return catalogue.planned(); });
    if (!plan) return plan.error();
    if (plan->empty()) return {};
    std::vector<PlannedFile> named;
    for (const PlannedFile& file : *plan) {
        if (isWhatWasPlanned(file)) named.push_back(file);
    }
    std::vector<CatalogueEntry> entries;
    for (const PlannedFile& file : named) {
        if (named.size() < plan->size()) {
            unlink(file.path.c_str());
        } else if (auto record = read_(file.path)) {
            entries.push_back(makeEntry(file.path, *stampOf(file.path), *std::move(record)));
            give(entries.back(), file.creationDate, file.location);
        }
    }
    return catalogue_.use([&](Catalogue& catalogue) { return catalogue.fulfilPlan(entries); });
}

}  // namespace quillmere
