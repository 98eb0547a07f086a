#include "Desktop/ImageIO/ExifTables.h"

#include <exception>
#include <exiv2/exiv2.hpp>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>

#include "Desktop/ImageIO/ExifValue.h"
#include "Desktop/ImageIO/ImageIOError.h"

namespace quillmere {
namespace {

/// A table, and what Exiv2 calls it and puts before the names of its entries.
struct Table {
    std::string_view name;
    std::string_view group;
    std::string_view prefix;
};

constexpr Table tables[] = {
    {kCGImagePropertyExifDictionary, "Photo", ""},
    {kCGImagePropertyTIFFDictionary, "Image", ""},
    {kCGImagePropertyGPSDictionary, "GPSInfo", "GPS"},
};

struct Block {
    Exiv2::ExifData entries;
    Exiv2::ByteOrder byteOrder = Exiv2::littleEndian;
};

const Exiv2::byte* bytesOf(std::span<const std::byte> data) {
    return reinterpret_cast<const Exiv2::byte*>(data.data());
}

Error damagedExif() {
    return imageIOError(ImageIOErrorCode::damaged, "The picture's metadata is damaged.");
}

Error notWritable(std::string_view entry) {
    return imageIOError(ImageIOErrorCode::notEncoded, "The metadata entry %@ can't be written.",
                        {std::string(entry)});
}

/// What throws is Exiv2 meeting a block that it can't make sense of, or memory running out.
template <class Work>
auto withExiv2(const Work& work) -> decltype(work()) {
    // Its complaints about others' files are nothing for a terminal.
    static const bool quiet = (Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute), true);
    (void)quiet;
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return imageIOOutOfMemory();
    } catch (const std::exception&) {
        return damagedExif();
    }
}

std::optional<Block> decoded(std::span<const std::byte> exif) {
    Block block;
    if (exif.empty()) return block;
    const auto order = Exiv2::ExifParser::decode(block.entries, bytesOf(exif),
                                                 static_cast<std::uint32_t>(exif.size()));
    if (order == Exiv2::invalidByteOrder) return {};
    block.byteOrder = order;
    return block;
}

// Exiv2 calls what it doesn't know by its number, and counts the places of other tables as entries.
bool isNamed(const std::string& tag) {
    return !tag.starts_with("0x") && tag != "ExifTag" && tag != "GPSTag";
}

CGImageProperties propertiesOf(const Exiv2::ExifData& entries) {
    CGImageProperties properties;
    for (const Exiv2::Exifdatum& entry : entries) {
        for (const Table& table : tables) {
            const std::string name = entry.tagName();
            if (entry.groupName() != table.group || !name.starts_with(table.prefix)) continue;
            if (!isNamed(name)) continue;
            if (auto value = valueOfExif(entry)) {
                properties[std::string(table.name)][name.substr(table.prefix.size())] =
                    *std::move(value);
            }
        }
    }
    return properties;
}

void eraseGroup(Exiv2::ExifData& entries, std::string_view group) {
    for (auto entry = entries.begin(); entry != entries.end();) {
        entry = entry->groupName() == group ? entries.erase(entry) : std::next(entry);
    }
}

void eraseAll(Exiv2::ExifData& entries, const Exiv2::ExifKey& key) {
    for (auto found = entries.findKey(key); found != entries.end(); found = entries.findKey(key)) {
        entries.erase(found);
    }
}

Result<void> setTable(Exiv2::ExifData& entries, const Table& table,
                      const CGImagePropertyTable& wanted) {
    const CGImagePropertyTable present = propertiesOf(entries)[std::string(table.name)];
    const bool whole = table.name == kCGImagePropertyGPSDictionary;
    if (whole) eraseGroup(entries, table.group);
    for (const auto& [name, value] : wanted) {
        const auto old = present.find(name);
        if (!whole && old != present.end() && old->second == value) continue;
        const Exiv2::ExifKey key("Exif." + std::string(table.group) + "." +
                                 std::string(table.prefix) + name);
        const std::unique_ptr<Exiv2::Value> stored = exifValueOf(key, value);
        if (!stored) return notWritable(name);
        eraseAll(entries, key);
        entries.add(key, stored.get());
    }
    return {};
}

void addVersions(Exiv2::ExifData& entries) {
    bool hasExif = false, hasPlace = false;
    for (const Exiv2::Exifdatum& entry : entries) {
        hasExif = hasExif || entry.groupName() == "Photo";
        hasPlace = hasPlace || entry.groupName() == "GPSInfo";
    }
    const auto add = [&](const char* name, const char* numbers) {
        const Exiv2::ExifKey key(name);
        if (entries.findKey(key) == entries.end()) entries[name] = std::string(numbers);
    };
    if (hasExif) add("Exif.Photo.ExifVersion", "48 50 51 50");  // "0232"
    if (hasPlace) add("Exif.GPSInfo.GPSVersionID", "2 3 0 0");
}

Result<std::vector<std::byte>> encoded(std::span<const std::byte> original, const Block& block) {
    // Exiv2 changes the original where all new values fit in it.
    std::vector<std::byte> copy(original.begin(), original.end());
    Exiv2::Blob rewritten;
    const auto method = Exiv2::ExifParser::encode(rewritten, copy.empty() ? nullptr : bytesOf(copy),
                                                  static_cast<std::uint32_t>(copy.size()),
                                                  block.byteOrder, block.entries);
    if (method == Exiv2::wmNonIntrusive) return copy;
    if (rewritten.empty()) return damagedExif();
    const auto bytes = std::as_bytes(std::span(rewritten));
    return std::vector<std::byte>(bytes.begin(), bytes.end());
}

}  // namespace

Result<CGImageProperties> propertiesOfExif(std::span<const std::byte> exif) {
    return withExiv2([&]() -> Result<CGImageProperties> {
        const auto block = decoded(exif);
        if (!block) return damagedExif();
        return propertiesOf(block->entries);
    });
}

Result<std::vector<std::byte>> exifWithProperties(std::span<const std::byte> exif,
                                                  const CGImageProperties& properties) {
    return withExiv2([&]() -> Result<std::vector<std::byte>> {
        auto block = decoded(exif);
        if (!block) return damagedExif();
        for (const Table& table : tables) {
            const auto wanted = properties.find(table.name);
            if (wanted == properties.end()) continue;
            const Result<void> set = setTable(block->entries, table, wanted->second);
            if (!set) return set.error();
        }
        addVersions(block->entries);
        if (exif.empty() && block->entries.empty()) return std::vector<std::byte>();
        return encoded(exif, *block);
    });
}

}  // namespace quillmere
