#include "Desktop/Photos/LibraryScanner.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <memory>

#include "Desktop/FileManager/FileDescriptor.h"

namespace quillmere {
namespace fs = std::filesystem;
namespace {

// The coarsest clock of a file system. What changed later than that may change again unnoticed.
constexpr std::int64_t settlingTime = 2'000'000'000;

struct FolderCloser {
    void operator()(DIR* folder) const { closedir(folder); }
};

struct Listing {
    std::int64_t modified = 0;  // of the folder, before it was listed
    std::vector<CatalogueUpdate::Found> files;
    std::vector<fs::path> folders;
    /// Whether a later change of names or files would show in their times.
    bool isSettled = false;
};

std::int64_t now() {
    return std::chrono::nanoseconds(std::chrono::system_clock::now().time_since_epoch()).count();
}

/// Takes what can be had of the folder: a file may vanish at any time.
std::optional<Listing> listingOf(const FileDescriptor& folder, const fs::path& path,
                                 std::int64_t modified) {
    const std::unique_ptr<DIR, FolderCloser> listed(fdopendir(dup(folder.number())));
    if (!listed) return std::nullopt;
    Listing listing;
    listing.modified = modified;
    const std::int64_t settled = now() - settlingTime;
    listing.isSettled = modified < settled;
    while (const dirent* item = readdir(listed.get())) {
        if (item->d_name[0] == '.') continue;
        fs::path inner = path / item->d_name;
        const bool mayBeFile = mayBePictureOrMovie(inner);
        const bool mayBeFolder = item->d_type == DT_DIR || item->d_type == DT_UNKNOWN;
        struct stat status {};
        if (!mayBeFile && !mayBeFolder) continue;
        if (fstatat(folder.number(), item->d_name, &status, AT_SYMLINK_NOFOLLOW) != 0) continue;
        if (S_ISDIR(status.st_mode)) {
            listing.folders.push_back(std::move(inner));
        } else if (S_ISREG(status.st_mode) && mayBeFile) {
            listing.files.push_back({std::move(inner), stampOf(status)});
            if (listing.files.back().stamp.modified >= settled) listing.isSettled = false;
        }
    }
    return listing;
}

}  // namespace

LibraryScanner::LibraryScanner(std::vector<fs::path> roots, CatalogueFile& catalogue,
                               FileRecordReader read, FolderWatch& watch)
    : roots_(std::move(roots)), catalogue_(catalogue), read_(std::move(read)), watch_(watch) {}

bool LibraryScanner::isInRoots(const fs::path& path) const {
    return std::any_of(roots_.begin(), roots_.end(),
                       [&](const fs::path& root) { return liesIn(path, root); });
}

Result<void> LibraryScanner::scan(Depth depth, const std::atomic<bool>& stop) {
    Pass pass{
        std::set<fs::path>(roots_.begin(), roots_.end()), depth, {catalogue_, read_, stop}, stop};
    const auto known = catalogue_.use([](Catalogue& catalogue) { return catalogue.foldersIn({}); });
    if (!known) return known.error();
    for (const fs::path& folder : *known) {
        if (isInRoots(folder)) {
            pass.folders.insert(folder);
        } else if (const auto gone = forget(folder, pass); !gone) {
            return gone;
        }
    }
    return finish(pass);
}

Result<void> LibraryScanner::look(const std::set<fs::path>& paths, const std::atomic<bool>& stop) {
    Pass pass{{}, Depth::everyFile, {catalogue_, read_, stop}, stop};
    for (const fs::path& path : paths) {
        if (stop) return {};
        if (const auto looked = lookAt(path, pass); !looked) return looked;
    }
    return finish(pass);
}

Result<void> LibraryScanner::lookAt(const fs::path& path, Pass& pass) {
    struct stat status {};
    const bool exists = lstat(path.c_str(), &status) == 0;
    if (exists && S_ISDIR(status.st_mode)) {
        pass.folders.insert(path);
        return {};
    }
    const auto entry = catalogue_.use([&](Catalogue& catalogue) { return catalogue.atPath(path); });
    if (!entry) return entry.error();
    std::vector<CatalogueEntry> known;
    if (*entry) known.push_back(**entry);
    if (exists && S_ISREG(status.st_mode) && mayBePictureOrMovie(path)) {
        const auto taken = pass.update.take({{path, stampOf(status)}}, known);
        return taken ? Result<void>() : taken.error();
    }
    pass.update.miss(std::move(known));
    const auto folders =
        catalogue_.use([&](Catalogue& catalogue) { return catalogue.foldersIn(path); });
    if (!folders) return folders.error();
    for (const fs::path& folder : *folders) {
        if (const auto gone = forget(folder, pass); !gone) return gone;
    }
    return {};
}

Result<void> LibraryScanner::finish(Pass& pass) {
    while (!pass.folders.empty() && !pass.stop) {
        // In their order, each comes before what it holds, and none comes twice.
        const fs::path folder = pass.folders.extract(pass.folders.begin()).value();
        if (const auto visited = visit(folder, pass); !visited) return visited;
    }
    return pass.update.finish();
}

Result<void> LibraryScanner::visit(const fs::path& folder, Pass& pass) {
    watch_.add(folder);
    const bool isRoot = std::find(roots_.begin(), roots_.end(), folder) != roots_.end();
    const FileDescriptor opened(
        open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | (isRoot ? 0 : O_NOFOLLOW)));
    struct stat status {};
    if (!opened.isOpen() || fstat(opened.number(), &status) != 0) {
        const bool isGone = errno == ENOENT || errno == ENOTDIR || errno == ELOOP;
        return isGone ? forget(folder, pass) : Result<void>();
    }
    const std::int64_t modified = stampOf(status).modified;
    const auto remembered =
        catalogue_.use([&](Catalogue& catalogue) { return catalogue.folderTime(folder); });
    if (!remembered) return remembered.error();
    if (pass.depth == Depth::changedFolders && *remembered == modified) return {};

    auto listing = listingOf(opened, folder, modified);
    if (!listing) return {};
    for (fs::path& inner : listing->folders) pass.folders.insert(std::move(inner));
    const auto known =
        catalogue_.use([&](Catalogue& catalogue) { return catalogue.inFolder(folder); });
    if (!known) return known.error();
    const auto allRead = pass.update.take(listing->files, *known);
    if (!allRead) return allRead.error();
    if (pass.stop) return {};
    // A file that can't be read may still be on its way here.
    const std::int64_t settled = listing->isSettled && *allRead ? modified : 0;
    return catalogue_.use(
        [&](Catalogue& catalogue) { return catalogue.setFolder(folder, settled); });
}

Result<void> LibraryScanner::forget(const fs::path& folder, Pass& pass) {
    watch_.remove(folder);
    auto entries = catalogue_.use([&](Catalogue& catalogue) { return catalogue.inFolder(folder); });
    if (!entries) return entries.error();
    pass.update.miss(*std::move(entries));
    return catalogue_.use([&](Catalogue& catalogue) { return catalogue.removeFolder(folder); });
}

}  // namespace quillmere
