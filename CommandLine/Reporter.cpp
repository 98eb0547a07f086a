#include "CommandLine/Reporter.h"

#include <cstdio>

#include "CommandLine/PrintedLine.h"

namespace quillmere::cli {

Reporter::Reporter(const EnhanceOptions& options)
    : options_(options), line_(stderr, !options.quiet) {}

void Reporter::progress(const std::filesystem::path& input, std::size_t number, float fraction,
                        std::chrono::seconds elapsed) {
    const std::size_t count = options_.inputs.size();
    const std::string which =
        count > 1 ? std::to_string(number) + "/" + std::to_string(count) + " " : "";
    line_.draw(progressText(which + input.filename().string(), fraction, elapsed));
}

void Reporter::succeeded(const std::filesystem::path& input, const std::filesystem::path& output,
                         PixelSize size, std::chrono::duration<double> elapsed) {
    line_.clear();
    if (options_.json) {
        Json line = {{"input", input.string()}, {"ok", true}};
        output.empty() ? line["library"] = true : line["output"] = output.string();
        line.update({{"style", displayKey(options_.style)},
                     {"width", size.width},
                     {"height", size.height},
                     {"seconds", elapsed.count()}});
        printLine(line);
    } else if (!options_.quiet) {
        const std::string place =
            output.empty() ? input.string() + ": in the photo library," : output.string() + ":";
        std::printf("%s %d by %d, made in %.1f s\n", place.c_str(), size.width, size.height,
                    elapsed.count());
        std::fflush(stdout);
    }
}

void Reporter::failed(const std::filesystem::path& input, const std::string& reason) {
    line_.clear();
    const std::string line = oneLine(reason);
    std::fprintf(stderr, "quillmere-cli: %s: %s\n", input.c_str(), line.c_str());
    if (options_.json) printLine({{"input", input.string()}, {"ok", false}, {"error", line}});
}

}  // namespace quillmere::cli
