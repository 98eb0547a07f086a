// Single 3x3 convolutions, ours beside oneDNN's.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <limits>
#include <optional>
#include <set>

#include "Benchmarks/OneDnnLayer.h"
#include "Benchmarks/OurLayer.h"
#include "Benchmarks/Section.h"
#include "Benchmarks/Table.h"
#include "Benchmarks/Timing.h"

namespace quillmere::benchmark {
namespace {

constexpr Rounds kRounds{5, 51, 2.0};

/// How far the two lie apart on a small picture, in parts of the largest value: whether they are
/// one layer at all. Sides that no block divides, so that borders count.
double difference(const LayerShape& shape, WorkerPool& pool) {
    const LayerData data = LayerData::of(shape, {61, 37});
    OurLayer ours(shape, data, pool);
    OneDnnLayer theirs = OneDnnLayer::direct(shape, data);
    ours.run();
    theirs.run();
    const std::vector<float> mine = ours.output();
    const std::vector<float> other = theirs.output();
    double apart = 0;
    double largest = 0;
    for (std::size_t i = 0; i < mine.size(); ++i) {
        const double here = std::abs(static_cast<double>(mine[i]) - other[i]);
        apart = std::max(apart, std::isnan(here) ? std::numeric_limits<double>::infinity() : here);
        largest = std::max(largest, std::abs(static_cast<double>(other[i])));
    }
    return apart / largest;
}

/// Times ours and theirs by turns and prints a row; gives the names of oneDNN's kernels.
std::set<std::string> measure(const LayerShape& shape, int count, WorkerPool& pool, Table& table) {
    const double apart = difference(shape, pool);
    const LayerData data = LayerData::of(shape, shape.size());
    OurLayer ours(shape, data, pool);
    OneDnnLayer direct = OneDnnLayer::direct(shape, data);
    std::optional<OneDnnLayer> winograd = OneDnnLayer::winograd(shape, data);

    std::set<std::string> kernels{direct.kernel()};
    std::vector<std::function<double()>> contestants{
        [&] { return secondsOf([&] { ours.run(); }); },
        [&] { return secondsOf([&] { direct.run(); }); }};
    if (winograd) {
        kernels.insert(winograd->kernel());
        contestants.push_back([&] { return secondsOf([&] { winograd->run(); }); });
    }
    for (const auto& contestant : contestants) contestant();  // the first run of each is slower
    const std::vector<Spread> times = takeTurns(kRounds, contestants);

    char exponent[16];
    std::snprintf(exponent, sizeof exponent, "%.0e", apart);
    table.row({shape.name(), std::to_string(shape.size().width) + "²", std::to_string(count),
               figure(times[0], kMilliseconds), figure(times[1], kMilliseconds),
               figure(times[1].median / times[0].median),
               winograd ? figure(times[2], kMilliseconds) : "none",
               figure(shape.operations() / times[0].median / 1e9), exponent});
    return kernels;
}

}  // namespace

void measureLayers(const Setting& setting) {
    Table table("Convolutions of 3x3",
                {"Channels", "Size", "Uses", "Quillmere, ms", "oneDNN direct, ms", "Ratio",
                 "oneDNN Winograd, ms", "GFLOPS", "Difference"});
    LayerCounts layers;
    for (const char* network : kNetworks) {
        const Result<LayerCounts> counts = layersOf(setting.network(network));
        if (!counts) {
            table.missing(network, counts.error().localizedDescription);
            continue;
        }
        for (const auto& [shape, count] : *counts) {
            if (shape.kernel == 3) layers[shape] += count;
        }
    }
    WorkerPool pool;
    std::set<std::string> kernels;
    for (const auto& [shape, count] : layers) kernels.merge(measure(shape, count, pool, table));
    table.note(
        "*Uses* counts the convolutions of this shape in all networks together. *Ratio* is to\n"
        "oneDNN's direct convolution, which it takes by itself. *GFLOPS* is Quillmere's: the sum\n"
        "of products of the plain convolution, over the time. *Difference* is the largest between\n"
        "the two results on a small picture, in parts of the largest value.");
    std::string names;
    for (const std::string& kernel : kernels) names += (names.empty() ? "" : ", ") + kernel;
    if (!names.empty()) table.note("oneDNN's kernels: " + names + ".");
}

}  // namespace quillmere::benchmark
