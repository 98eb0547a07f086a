#include "Tests/Desktop/ImageIO/HEIFShapes.h"

#include <algorithm>

namespace quillmere {
namespace {

enum Identifier : unsigned { leftTile = 1, grid = 2, rightTile = 3, exifItem = 4, secondExif = 5 };

constexpr std::size_t tileHeader = 8;

/// The box that begins 4 bytes before its first mention.
Bytes boxOf(const Bytes& file, const std::string& type) {
    const auto letters = std::as_bytes(std::span(type));
    const auto at = std::search(file.begin(), file.end(), letters.begin(), letters.end()) - 4;
    unsigned size = 0;
    for (int i = 0; i < 4; ++i) size = size << 8 | static_cast<unsigned>(at[i]);
    return {at, at + size};
}

struct Located {
    unsigned id;
    bool inMeta;
    std::vector<std::pair<std::size_t, std::size_t>> extents;  // offsets in `mdat` or `idat`
};

class Writer {
public:
    Writer(const HEIFShape& shape, const Bytes& exif) : shape_(shape) {
        const Bytes real = pictureFile("noise.heic");
        type_ = boxOf(real, "ftyp");
        handler_ = boxOf(real, "hdlr");
        properties_ = boxOf(real, "ipco");
        const Bytes tile = boxOf(real, "mdat");
        place(leftTile, shape.tilesInMeta, {tile.begin() + tileHeader, tile.end()}, shape.pieces);
        items_.push_back({rightTile, items_.front().inMeta, items_.front().extents});
        const Bytes twoTiles =
            BoxWriter().number(0, 2).number(0, 1).number(1, 1).number(112, 2).number(40, 2).data;
        place(grid, shape.ilocVersion > 0, twoTiles, false);
        // The second size in the file is the whole picture's.
        const std::string size = "ispe";
        const auto letters = std::as_bytes(std::span(size));
        const auto last =
            std::find_end(properties_.begin(), properties_.end(), letters.begin(), letters.end());
        last[11] = std::byte{112};
        using enum HEIFShape::Exif;
        if (shape.exif == none) return;
        place(exifItem, shape.exif == inMeta, exif, false);
        if (shape.exif == twice) place(secondExif, false, exif, false);
    }

    Bytes file() const {
        const Bytes data = BoxWriter().add(inData_).box("mdat", shape_.longBoxes);
        const std::size_t header = data.size() - inData_.size();
        const std::size_t metaBytes = meta(0).size();
        const std::size_t before = type_.size() + (shape_.dataFirst ? 0 : metaBytes);
        BoxWriter file;
        file.add(type_);
        if (shape_.dataFirst) file.add(data);
        file.add(meta(before + header));
        if (!shape_.dataFirst) file.add(data);
        if (shape_.openEnd) {
            const std::size_t last = file.data.size() - data.size();
            std::fill_n(file.data.begin() + static_cast<std::ptrdiff_t>(last), 4, std::byte{0});
        }
        return file.data;
    }

private:
    void place(unsigned id, bool inMeta, const Bytes& content, bool pieces) {
        Bytes& target = inMeta ? inMeta_ : inData_;
        const std::size_t first = pieces ? content.size() / 3 : content.size();
        Located item{id, inMeta, {{target.size(), first}}};
        if (pieces) item.extents.emplace_back(target.size() + first, content.size() - first);
        target = BoxWriter{target}.add(content).data;
        items_.push_back(item);
    }

    unsigned idBytes() const { return shape_.longIdentifiers ? 4 : 2; }
    bool isLong() const { return shape_.longIdentifiers; }

    Bytes information() const {
        BoxWriter all;
        all.number(std::uint64_t{isLong()} << 24, 4).number(items_.size(), isLong() ? 4 : 2);
        for (const Located& item : items_) {
            BoxWriter entry;
            entry.number(isLong() ? 3u << 24 : 2u << 24, 4).number(item.id, idBytes()).number(0, 2);
            entry.text(item.id == grid ? "grid" : item.id >= exifItem ? "Exif" : "hvc1");
            all.add(entry.number(0, 1).box("infe"));
        }
        return all.box("iinf");
    }

    Bytes references() const {
        using enum HEIFShape::Exif;
        BoxWriter all;
        all.number(std::uint64_t{isLong()} << 24, 4);
        all.add(reference("dimg", grid, {leftTile, rightTile}));
        const unsigned described = shape_.exif == onTheTile ? leftTile : grid;
        const bool describes = shape_.exif != none && shape_.exif != unreferred;
        if (describes) all.add(reference("cdsc", exifItem, {described}));
        if (shape_.exif == twice) all.add(reference("cdsc", secondExif, {grid}));
        return all.box("iref");
    }

    Bytes reference(const char* type, unsigned from, std::initializer_list<unsigned> to) const {
        BoxWriter one;
        one.number(from, idBytes()).number(to.size(), 2);
        for (const unsigned id : to) one.number(id, idBytes());
        return one.box(type);
    }

    Bytes associations() const {
        BoxWriter all;  // the properties are hvcC, ispe of a tile, ispe of the whole, pixi
        all.number(0, 4).number(3, 4);
        for (const unsigned tile : {leftTile, rightTile}) {
            if (tile == rightTile) all.number(grid, 2).number(2, 1).number(0x0384, 2);
            all.number(tile, 2).number(2, 1).number(0x8102, 2);
        }
        return BoxWriter().add(properties_).add(all.box("ipma")).box("iprp");
    }

    Bytes locations(std::size_t dataBegin) const {
        BoxWriter all;
        all.number(std::uint64_t{shape_.ilocVersion} << 24, 4);
        all.number(shape_.offsetBytes << 4 | shape_.lengthBytes, 1);
        all.number(shape_.baseBytes << 4 | shape_.indexBytes, 1);
        const unsigned wide = shape_.ilocVersion < 2 ? 2 : 4;
        all.number(items_.size(), wide);
        for (const Located& item : items_) {
            all.number(item.id, wide);
            if (shape_.ilocVersion > 0) all.number(item.inMeta, 2);
            const std::size_t begin = item.inMeta ? 0 : dataBegin;
            const std::size_t base =
                shape_.offsetBytes == 0 ? item.extents.front().first + begin : begin;
            all.number(0, 2).number(base, shape_.baseBytes).number(item.extents.size(), 2);
            for (const auto& [offset, length] : item.extents) {
                all.number(0, shape_.indexBytes);
                all.number(shape_.baseBytes == 0 ? begin + offset : offset, shape_.offsetBytes);
                all.number(length, shape_.lengthBytes);
            }
        }
        return all.box("iloc");
    }

    Bytes meta(std::size_t dataBegin) const {
        BoxWriter all;
        all.number(0, 4).add(handler_);
        all.add(BoxWriter()
                    .number(std::uint64_t{isLong()} << 24, 4)
                    .number(grid, idBytes())
                    .box("pitm", shape_.longBoxes));
        all.add(locations(dataBegin)).add(information()).add(references()).add(associations());
        if (!inMeta_.empty()) all.add(BoxWriter().add(inMeta_).box("idat"));
        return all.box("meta", shape_.longBoxes);
    }

    const HEIFShape& shape_;
    Bytes type_, handler_, properties_;
    Bytes inData_, inMeta_;
    std::vector<Located> items_;
};

}  // namespace

Bytes heifFile(const HEIFShape& shape, const Bytes& exif) { return Writer(shape, exif).file(); }

}  // namespace quillmere
