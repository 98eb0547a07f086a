#include "Benchmarks/WarmUpSection.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <sstream>
#include <vector>

#include "Benchmarks/Process.h"
#include "Benchmarks/Section.h"
#include "Benchmarks/Table.h"
#include "Benchmarks/Timing.h"
#include "CommandLine/LimitOption.h"
#include "Desktop/DesktopPlatform.h"
#include "Quillmere/Models/Enhance/ModelWarmUp.h"
#include "Quillmere/Models/Enhance/TileEngine.h"

namespace quillmere::benchmark {
namespace {

constexpr int kProcesses = 9;
constexpr int kSide = 160;  // one tile

std::optional<double> secondsInNewProcess(const char* start) {
    const Outcome outcome = runProgram({thisProgram(), kFirstConversionMode, start}, true);
    std::istringstream text(outcome.output);
    double seconds = 0;
    if (outcome.exitCode != 0 || !(text >> seconds)) return std::nullopt;
    return seconds;
}

UIImage plainPicture() {
    constexpr std::size_t count = kSide * kSide * CGImage::bytesPerPixel;
    const auto pixels = std::make_shared<std::vector<std::uint8_t>>(count, std::uint8_t{255});
    return UIImage(CGImage({kSide, kSide}, kSide * CGImage::bytesPerPixel,
                           std::shared_ptr<const std::uint8_t>(pixels, pixels->data())));
}

}  // namespace

void measureWarmUp(const Setting&) {
    Table table("The first conversion of a process, one tile in the style high",
                {"Start", "From tap to result, ms"});
    std::vector<double> cold;
    std::vector<double> warm;
    for (int i = 0; i < kProcesses; ++i) {
        const auto coldSeconds = secondsInNewProcess("cold");
        const auto warmSeconds = secondsInNewProcess("warm");
        if (!coldSeconds || !warmSeconds)
            return table.missing("All", "The network was not fetched, or a conversion failed.");
        cold.push_back(*coldSeconds);
        warm.push_back(*warmSeconds);
    }
    table.row({"without warm-up", figure(spreadOf(cold), kMilliseconds)});
    table.row({"after the warm-up", figure(spreadOf(warm), kMilliseconds)});
    table.note("By turns, each in a new process; the network's file is in the system's cache.");
}

int convertFirst(const std::string& start) {
    const auto platform = DesktopPlatform::make();
    if (!platform) return 1;
    DesktopPlatform& ports = **platform;
    const ModelCatalogue catalogue(ports.coreML(), ports.bundles());
    const cli::LimitOption limit(ports.userDefaults(), 1024);
    TileEngine engine({limit, ports.graphics(), ports.coreImage(), ports.vision(), catalogue,
                       ports.dispatch(), ports.analytics(), ports.localization(), ports.console()});
    if (start == "warm") {
        ModelWarmUp(catalogue, ports.coreML(), ports.dispatch(), ports.console())
            .warmUpModel(EnhanceStyle::high);
    }
    const UIImage picture = plainPicture();
    bool made = false;
    const double seconds = secondsOf([&] {
        engine.enhanceImage(EnhanceStyle::high, picture, {},
                            [&](const std::optional<UIImage>& result,
                                const std::optional<std::string>&) { made = result.has_value(); });
    });
    if (!made) return 1;
    std::printf("%f\n", seconds);
    return 0;
}

}  // namespace quillmere::benchmark
