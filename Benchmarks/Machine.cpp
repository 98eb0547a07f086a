#include "Benchmarks/Machine.h"

#include <hwy/targets.h>
#include <stdlib.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <string>
#include <thread>

#include "Benchmarks/OneDnnLayer.h"

namespace quillmere::benchmark {
namespace {

std::string processor() {
    std::ifstream info("/proc/cpuinfo");
    for (std::string line; std::getline(info, line);) {
        if (line.starts_with("model name")) return line.substr(line.find(':') + 2);
    }
    return "unknown";
}

/// Of the targets that were compiled and that the processor has, the lowest bit is the one that
/// run-time dispatch takes.
const char* simdTarget() {
    const auto targets = hwy::SupportedTargets() & HWY_TARGETS;
    return hwy::TargetName(targets & -targets);
}

void line(const char* what, const std::string& value) {
    std::printf("- %s: %s\n", what, value.c_str());
}

}  // namespace

void describeMachine(std::size_t threads) {
    std::array<double, 3> load{};
    getloadavg(load.data(), static_cast<int>(load.size()));
    std::array<char, 64> loads{};
    std::snprintf(loads.data(), loads.size(), "%.2f, %.2f, %.2f (1, 5, 15 minutes)", load[0],
                  load[1], load[2]);

    line("Processor", processor());
    line("Cores", std::to_string(std::thread::hardware_concurrency()) + ", threads used " +
                      std::to_string(threads));
    line("Instruction set that Highway chose for our kernels", simdTarget());
    line("Compiler", "g++ " __VERSION__);
    line("oneDNN", oneDnnVersion());
    line("Load average at the start", loads.data());
    std::printf(
        "\nTimes are medians of interleaved runs, with the quartiles in brackets. Ratios are of "
        "medians:\nabove 1, Quillmere is the faster one.\n");
    std::fflush(stdout);
}

}  // namespace quillmere::benchmark
