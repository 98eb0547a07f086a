// How long a network takes to be ready: the first time in a process, and again.
#include "Benchmarks/LoadSection.h"

#include <cstdio>
#include <optional>
#include <sstream>

#include "Benchmarks/Process.h"
#include "Benchmarks/Section.h"
#include "Benchmarks/Table.h"
#include "Benchmarks/Timing.h"
#include "Neural/Model/CompiledModel.h"
#include "Neural/Runtime/NetworkCache.h"

namespace quillmere::benchmark {
namespace {

constexpr int kProcesses = 7;

}  // namespace

void measureLoading(const Setting& setting) {
    Table table("Loading a network", {"Network", "First time, ms", "Again, ms"});
    for (const char* network : kNetworks) {
        const std::string directory = setting.network(network);
        if (const auto model = neural::CompiledModel::open(directory); !model) {
            table.missing(network, model.error().localizedDescription);
            continue;
        }
        std::vector<double> first;
        std::vector<double> again;
        for (int i = 0; i < kProcesses; ++i) {
            const Outcome outcome = runProgram({thisProgram(), kLoadingMode, directory}, true);
            std::istringstream times(outcome.output);
            double one = 0;
            double other = 0;
            if (!(times >> one >> other)) break;
            first.push_back(one);
            again.push_back(other);
        }
        if (first.size() < kProcesses) {
            table.missing(network, "It could not be loaded.");
            continue;
        }
        table.row({network, figure(spreadOf(first), kMilliseconds),
                   figure(spreadOf(again), kMilliseconds)});
    }
    table.note(
        "Each first time is that of a new process; the files are in the system's cache already.");
}

int loadTwice(const std::string& directory) {
    WorkerPool pool;
    neural::NetworkCache cache(pool);
    for (int time = 0; time < 2; ++time) {
        std::optional<Result<std::shared_ptr<const neural::Network>>> network;
        const double seconds = secondsOf([&] { network = cache.load(directory); });
        if (!*network) return 1;
        std::printf("%f\n", seconds);
    }
    return 0;
}

}  // namespace quillmere::benchmark
