// What the styles keep of pictures that were reduced and enlarged again, beside Lanczos's filter.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <functional>
#include <memory>
#include <sstream>

#include "Benchmarks/Photo.h"
#include "Benchmarks/PictureQuality.h"
#include "Benchmarks/Section.h"
#include "Benchmarks/Table.h"
#include "Benchmarks/Timing.h"
#include "Desktop/FileManager/DesktopFileManager.h"
#include "Desktop/ImageIO/DesktopImageIO.h"
#include "Neural/Runtime/Network.h"

namespace quillmere::benchmark {
namespace {

using neural::Network;

constexpr const char* kFolder = "/usr/share/backgrounds";
constexpr int kFactor = 4;
constexpr int kLongest = 1024;  // of a truth's sides: one tile
// Files are soft at their full size: the truth is a whole fraction of them, with at least this
// side.
constexpr int kShortest = 720;
constexpr int kEdge = 16;  // not compared: what lies there is guessed from one side
constexpr double kDamagedQuality = 0.6;
constexpr Rounds kRounds{3, 9, 4.0};
constexpr PixelSize kTile{256, 256};

/// Red, green and blue.
using Colours = std::array<GreyPicture, 3>;

Colours coloursOf(const CGImage& image) {
    Colours colours;
    for (std::size_t c = 0; c < colours.size(); ++c) {
        colours[c] = GreyPicture(image.size());
        for (int y = 0; y < image.size().height; ++y) {
            const std::uint8_t* pixel = image.row(y) + c;
            for (int x = 0; x < image.size().width; ++x, pixel += CGImage::bytesPerPixel) {
                colours[c].row(y)[x] = *pixel;
            }
        }
    }
    return colours;
}

CGImage imageOf(const Colours& colours) {
    const PixelSize size = colours[0].size;
    const std::size_t bytesPerRow = CGImage::bytesPerPixel * static_cast<std::size_t>(size.width);
    const std::shared_ptr<std::uint8_t[]> bytes(
        new std::uint8_t[bytesPerRow * static_cast<std::size_t>(size.height)]);
    for (std::size_t n = 0; n < colours[0].pixels.size(); ++n) {
        std::uint8_t* pixel = bytes.get() + CGImage::bytesPerPixel * n;
        for (std::size_t c = 0; c < 3; ++c) {
            pixel[c] = static_cast<std::uint8_t>(colours[c].pixels[n]);
        }
        pixel[3] = 255;
    }
    return CGImage(size, bytesPerRow, std::shared_ptr<const std::uint8_t>(bytes, bytes.get()));
}

/// Without the edge that is not compared.
GreyPicture brightnessOf(const Colours& colours) {
    const PixelSize size = colours[0].size;
    GreyPicture result({size.width - 2 * kEdge, size.height - 2 * kEdge});
    for (int y = 0; y < result.size.height; ++y) {
        const auto at = [&](std::size_t c, int x) { return colours[c].row(y + kEdge)[x + kEdge]; };
        for (int x = 0; x < result.size.width; ++x) {
            result.row(y)[x] = 0.299f * at(0, x) + 0.587f * at(1, x) + 0.114f * at(2, x);
        }
    }
    return result;
}

/// From the picture's middle.
GreyPicture cropped(const GreyPicture& picture, PixelSize size) {
    GreyPicture result(size);
    const int left = (picture.size.width - size.width) / 2;
    const int top = (picture.size.height - size.height) / 2;
    for (int y = 0; y < size.height; ++y) {
        std::copy_n(picture.row(y + top) + left, size.width, result.row(y));
    }
    return result;
}

Colours changed(const Colours& colours,
                const std::function<GreyPicture(const GreyPicture&)>& change) {
    return {change(colours[0]), change(colours[1]), change(colours[2])};
}

Result<UIImage> load(const std::filesystem::path& file, WorkerPool& pool) {
    const auto data = DesktopFileManager().contentsOfFile(file);
    if (!data) return data.error();
    return DesktopImageIO(pool).imageWithData(*data);
}

/// What a JPEG file of `picture` shows.
Result<UIImage> damaged(const CGImage& picture, WorkerPool& pool) {
    DesktopImageIO imageIO(pool);
    const auto data = imageIO.jpegRepresentation(UIImage(picture), kDamagedQuality);
    if (!data) return data.error();
    return imageIO.imageWithData(*data);
}

enum Kind { photograph, drawing, kinds };
enum State { clean, jpeg, states };

/// A picture as it is, and as somebody brings it.
struct Case {
    Kind kind;
    State state;
    GreyPicture truth;
    CGImage source;
};

Result<void> addCases(Kind kind, const std::string& name, WorkerPool& pool,
                      std::vector<Case>& cases) {
    const auto picture = load(std::filesystem::path(kFolder) / name, pool);
    if (!picture) return picture.error();
    const PixelSize whole = picture->cgImage()->size();
    const int divisor = std::max(1, std::min(whole.width, whole.height) / kShortest);
    const auto side = [divisor](int length) {
        return std::min(kLongest, length / divisor) / kFactor * kFactor;
    };
    const PixelSize size{side(whole.width), side(whole.height)};
    const Colours truth = changed(coloursOf(*picture->cgImage()), [&](const GreyPicture& colour) {
        return rounded(cropped(reduced(colour, divisor, Reduction::area), size));
    });
    const CGImage small = imageOf(changed(truth, [](const GreyPicture& colour) {
        return rounded(reduced(colour, kFactor, Reduction::lanczos));
    }));
    const auto spoilt = damaged(small, pool);
    if (!spoilt) return spoilt.error();
    cases.push_back({kind, clean, brightnessOf(truth), small});
    cases.push_back({kind, jpeg, brightnessOf(truth), *spoilt->cgImage()});
    return {};
}

using Enlargement = std::function<Result<CGImage>(const CGImage&)>;

Enlargement byLanczos() {
    return [](const CGImage& source) -> Result<CGImage> {
        return imageOf(changed(coloursOf(source), [](const GreyPicture& colour) {
            return rounded(enlarged(colour, kFactor));
        }));
    };
}

Enlargement by(const Network& network) {
    return [&network](const CGImage& source) -> Result<CGImage> {
        const PixelSize size{kFactor * source.size().width, kFactor * source.size().height};
        const std::size_t bytesPerRow =
            CGImage::bytesPerPixel * static_cast<std::size_t>(size.width);
        const std::shared_ptr<std::uint8_t[]> bytes(
            new std::uint8_t[bytesPerRow * static_cast<std::size_t>(size.height)]);
        const auto ran = network.run({source.row(0), source.bytesPerRow(), source.size()},
                                     {bytes.get(), bytesPerRow, size});
        if (!ran) return ran.error();
        return CGImage(size, bytesPerRow, std::shared_ptr<const std::uint8_t>(bytes, bytes.get()));
    };
}

/// Means over pictures.
struct Score {
    double signal = 0, similarity = 0, deviation = 0;
    int count = 0;

    std::vector<std::string> cells() const {
        char texts[3][32];
        std::snprintf(texts[0], sizeof texts[0], "%.2f", signal / count);
        std::snprintf(texts[1], sizeof texts[1], "%.4f", similarity / count);
        std::snprintf(texts[2], sizeof texts[2], "%.4f", deviation / count);
        return {texts[0], texts[1], texts[2]};
    }
};

using Scores = std::array<std::array<Score, kinds>, states>;

Result<Scores> scoresOf(const Enlargement& enlargement, const std::vector<Case>& cases) {
    Scores scores;
    for (const Case& each : cases) {
        const auto result = enlargement(each.source);
        if (!result) return result.error();
        const GreyPicture brightness = brightnessOf(coloursOf(*result));
        Score& score = scores[each.state][each.kind];
        score.signal += signalToNoise(brightness, each.truth);
        score.similarity += structuralSimilarity(brightness, each.truth);
        score.deviation += gradientDeviation(brightness, each.truth);
        ++score.count;
    }
    return scores;
}

struct Row {
    std::string name;
    std::string time;
    Scores scores;
};

Result<std::vector<Case>> heldOutCases(WorkerPool& pool) {
    std::ifstream list(QUILLMERE_HELD_OUT);
    std::vector<Case> cases;
    for (std::string line; std::getline(list, line);) {
        if (line.starts_with('#')) continue;
        std::istringstream words(line);
        std::string kind, name;
        words >> kind >> name;
        const auto added = addCases(kind == "drawing" ? drawing : photograph, name, pool, cases);
        if (!added) return added.error();
    }
    return cases;
}

void print(const std::vector<Row>& rows, State state) {
    Table table(state == clean ? "Reduced to a quarter by Lanczos's filter, and enlarged again"
                               : "The same, out of a JPEG file of quality 60",
                {"Enlarged by", "Photographs: PSNR, dB", "MS-SSIM", "GMSD", "Drawings: PSNR, dB",
                 "MS-SSIM", "GMSD", "A tile, ms"});
    for (const Row& row : rows) {
        std::vector<std::string> cells{row.name};
        for (const Score& score : row.scores[state]) {
            for (const std::string& cell : score.cells()) cells.push_back(cell);
        }
        cells.push_back(row.time);
        table.row(cells);
    }
    if (state == jpeg) {
        table.note(
            "PSNR and MS-SSIM are better where higher, GMSD where lower; all of brightness.");
    }
}

}  // namespace

void measureFidelity(const Setting& setting) {
    WorkerPool pool;
    std::vector<Row> rows;
    std::vector<std::pair<std::string, std::string>> missing;
    const auto cases = heldOutCases(pool);
    const auto tile = makePhoto(setting.bundle, kTile);
    if (!cases || !tile) {
        const Error& error = cases ? tile.error() : cases.error();
        return Table("Fidelity", {"Style"}).missing("All", error.localizedDescription);
    }
    if (auto scores = scoresOf(byLanczos(), *cases)) rows.push_back({"Lanczos", "", *scores});
    for (const char* name : kNetworks) {
        const auto network = Network::load(setting.network(name), pool);
        if (!network) {
            missing.emplace_back(name, network.error().localizedDescription);
            continue;
        }
        const Enlargement enlargement = by(**network);
        const auto scores = scoresOf(enlargement, *cases);
        if (!scores) {
            missing.emplace_back(name, scores.error().localizedDescription);
            continue;
        }
        const std::array<std::function<double()>, 1> runs{
            [&] { return secondsOf([&] { (void)enlargement(*tile->cgImage()); }); }};
        rows.push_back({name, figure(takeTurns(kRounds, runs)[0], kMilliseconds), *scores});
    }
    for (const State state : {clean, jpeg}) print(rows, state);
    for (const auto& [name, reason] : missing) {
        std::printf("Left out: %s. %s\n", name.c_str(), reason.c_str());
    }
}

}  // namespace quillmere::benchmark
