#include "Desktop/Photos/CatalogueUpdate.h"

#include <iterator>
#include <random>
#include <unordered_map>

namespace quillmere {
namespace fs = std::filesystem;
namespace {

// Records that go into the catalogue at once: few flushes, and soon something to see.
constexpr std::size_t batchSize = 500;

/// 128 random bits, in the usual form of such identifiers.
std::string makeIdentifier() {
    static constexpr char digits[] = "0123456789ABCDEF";
    std::random_device random;
    std::string identifier;
    for (const int letters : {8, 4, 4, 4, 12}) {
        if (!identifier.empty()) identifier += '-';
        for (int i = 0; i < letters; ++i) identifier += digits[random() % 16];
    }
    return identifier;
}

bool stands(const CatalogueEntry& entry) {
    const auto stamp = stampOf(entry.path);
    return stamp && stamp->inode == entry.stamp.inode;
}

}  // namespace

CatalogueEntry makeEntry(fs::path path, const FileStamp& stamp, FileRecord record) {
    CatalogueEntry entry;
    entry.identifier = makeIdentifier();
    entry.path = std::move(path);
    entry.stamp = stamp;
    entry.record = std::move(record);
    if (!entry.record.creationDate) entry.record.creationDate = stamp.modificationDate();
    return entry;
}

Result<bool> CatalogueUpdate::take(const std::vector<Found>& files,
                                   const std::vector<CatalogueEntry>& known) {
    std::unordered_map<std::string, const CatalogueEntry*> entries;
    for (const CatalogueEntry& entry : known) entries.emplace(entry.path.native(), &entry);

    bool allRead = true;
    std::vector<CatalogueEntry> batch;
    for (const Found& file : files) {
        if (stop_) break;
        const auto found = entries.find(file.path.native());
        const CatalogueEntry* entry = found == entries.end() ? nullptr : found->second;
        if (entry) entries.erase(found);
        if (entry && entry->stamp == file.stamp) continue;
        if (!entry) {
            const auto moved = takeMoved(file);
            if (!moved) return moved.error();
            if (*moved) continue;
        }
        if (auto record = read_(file.path)) {
            batch.push_back(makeEntry(file.path, file.stamp, *std::move(record)));
        } else {
            allRead = false;
            if (entry) missing_.push_back(*entry);
        }
        if (batch.size() < batchSize) continue;
        if (const auto put = this->put(batch); !put) return put.error();
    }
    if (const auto put = this->put(batch); !put) return put.error();
    if (stop_) return false;
    for (const auto& [path, entry] : entries) missing_.push_back(*entry);
    return allRead;
}

Result<void> CatalogueUpdate::put(std::vector<CatalogueEntry>& entries) {
    if (entries.empty()) return {};
    const auto done = catalogue_.use([&](Catalogue& catalogue) { return catalogue.put(entries); });
    entries.clear();
    return done;
}

Result<bool> CatalogueUpdate::takeMoved(const Found& file) {
    return catalogue_.use([&](Catalogue& catalogue) -> Result<bool> {
        const auto alike = catalogue.withStamp(file.stamp);
        if (!alike) return alike.error();
        for (const CatalogueEntry& entry : *alike) {
            if (stands(entry)) continue;
            const auto moved = catalogue.move(entry.identifier, file.path);
            if (!moved) return moved.error();
            return true;
        }
        return false;
    });
}

void CatalogueUpdate::miss(std::vector<CatalogueEntry> entries) {
    missing_.insert(missing_.end(), std::make_move_iterator(entries.begin()),
                    std::make_move_iterator(entries.end()));
}

Result<void> CatalogueUpdate::finish() {
    if (stop_ || missing_.empty()) return {};
    return catalogue_.use([&](Catalogue& catalogue) -> Result<void> {
        std::vector<std::string> gone;
        for (const CatalogueEntry& entry : missing_) {
            // Its file may have been met under another name, or have come back.
            const auto now = catalogue.withIdentifier(entry.identifier);
            if (!now) return now.error();
            if (*now && (*now)->path == entry.path && (*now)->stamp == entry.stamp) {
                gone.push_back(entry.identifier);
            }
        }
        return catalogue.remove(gone);
    });
}

}  // namespace quillmere
