// Whole networks on one tile, beside oneDNN's time for their convolutions alone.
#include <array>
#include <cstdint>
#include <map>

#include "Benchmarks/OneDnnLayer.h"
#include "Benchmarks/Photo.h"
#include "Benchmarks/Section.h"
#include "Benchmarks/Table.h"
#include "Benchmarks/Timing.h"
#include "Neural/Runtime/Network.h"

namespace quillmere::benchmark {
namespace {

using neural::Network;

constexpr Rounds kRounds{3, 15, 30.0};

/// Every convolution of a network by oneDNN. A shape that occurs many times is run a few times and
/// counted as often as it occurs: it is spared the changing weights and buffers of a real network,
/// which favours oneDNN.
class OneDnnConvolutions {
public:
    explicit OneDnnConvolutions(const LayerCounts& counts) : counts_(counts) {
        for (const auto& [shape, count] : counts) {
            const auto made = layers_.emplace(
                shape, OneDnnLayer::direct(shape, LayerData::of(shape, shape.size())));
            made.first->second.run();
        }
    }

    /// The time of one pass over all convolutions, in seconds.
    double pass() {
        double sum = 0;
        for (auto& [shape, layer] : layers_) {
            std::vector<double> samples;
            for (int run = 0; run < kRunsPerPass; ++run) {
                samples.push_back(secondsOf([&layer = layer] { layer.run(); }));
            }
            sum += counts_.at(shape) * spreadOf(std::move(samples)).median;
        }
        return sum;
    }

private:
    static constexpr int kRunsPerPass = 3;

    const LayerCounts& counts_;
    std::map<LayerShape, OneDnnLayer> layers_;
};

/// Runs a network as the application does: 8 bits in, 8 bits out, its memory taken and given back.
class TileRun {
public:
    TileRun(const Network& network, const CGImage& tile)
        : network_(network),
          tile_(tile),
          size_{kTile.width * network.scale(), kTile.height * network.scale()},
          output_(rowBytes() * static_cast<std::size_t>(size_.height)) {}

    Result<void> run() {
        return network_.run({tile_.row(0), tile_.bytesPerRow(), tile_.size()},
                            {output_.data(), rowBytes(), size_});
    }

private:
    std::size_t rowBytes() const {
        return CGImage::bytesPerPixel * static_cast<std::size_t>(size_.width);
    }

    const Network& network_;
    const CGImage& tile_;
    PixelSize size_;
    std::vector<std::uint8_t> output_;
};

void measure(const char* name, const Setting& setting, const CGImage& tile, WorkerPool& pool,
             Table& table) {
    const auto directory = setting.network(name);
    const Result<LayerCounts> counts = layersOf(directory);
    if (!counts) return table.missing(name, counts.error().localizedDescription);
    const auto network = Network::load(directory, pool);
    if (!network) return table.missing(name, network.error().localizedDescription);

    TileRun ours(**network, tile);
    Result<void> done;
    OneDnnConvolutions theirs(*counts);
    const std::array<std::function<double()>, 2> contestants{
        [&] { return secondsOf([&] { done = ours.run(); }); }, [&] { return theirs.pass(); }};
    const std::vector<Spread> times = takeTurns(kRounds, contestants);
    if (!done) return table.missing(name, done.error().localizedDescription);

    double operations = 0;
    for (const auto& [shape, count] : *counts) operations += count * shape.operations();
    table.row({name, figure(times[0], kSeconds), figure(times[1], kSeconds),
               figure(times[1].median / times[0].median),
               figure(operations / times[0].median / 1e9)});
}

}  // namespace

void measureNetworks(const Setting& setting) {
    Table table(
        "Networks, a tile of 256 by 256",
        {"Network", "Quillmere, s", "oneDNN's convolutions, s", "Ratio", "Quillmere, GFLOPS"});
    const Result<UIImage> tile = makePhoto(setting.bundle, kTile);
    if (!tile) return table.missing("All", tile.error().localizedDescription);
    WorkerPool pool;
    for (const char* network : kNetworks) {
        measure(network, setting, *tile->cgImage(), pool, table);
    }
    table.note(
        "Quillmere's time is that of the whole network, from 8-bit pixels to 8-bit pixels.\n"
        "oneDNN's is the sum over the network's convolutions, all direct, and nothing else.\n"
        "*GFLOPS* is the sums of products of the plain convolutions over the time.");
}

}  // namespace quillmere::benchmark
