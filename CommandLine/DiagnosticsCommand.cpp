#include "CommandLine/DiagnosticsCommand.h"

#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>

#include "Base/Invariant.h"
#include "Desktop/Analytics/EventFile.h"
#include "Desktop/Application/Timestamp.h"
#include "Desktop/CrashLog/RunFolder.h"

namespace quillmere::cli {
namespace {

using Json = nlohmann::ordered_json;

struct EventRecord {
    std::filesystem::path path;
    bool exists = false;
};

const char* sentenceOf(PastRun::State state) {
    switch (state) {
        case PastRun::State::running:
            return "is running";
        case PastRun::State::endedInOrder:
            return "ended in order";
        case PastRun::State::broken:
            return "did not end in order";
    }
    invariantBroken();
}

const char* nameOf(PastRun::State state) {
    switch (state) {
        case PastRun::State::running:
            return "running";
        case PastRun::State::endedInOrder:
            return "endedInOrder";
        case PastRun::State::broken:
            return "broken";
    }
    invariantBroken();
}

/// Where its first record is torn, a run has nothing but its file.
std::string titleOf(const PastRun& run) {
    if (!run.start) return run.file.string();
    return timestamp(run.start->time) + "  " + run.start->text + ", process " +
           std::to_string(run.start->process);
}

void printText(const EventRecord& events, const std::vector<PastRun>& runs) {
    std::string text = "Events: " + events.path.string() +
                       (events.exists ? "" : " (none have been recorded)") + "\n";
    if (runs.empty()) text += "\nNo run has been recorded.\n";
    for (const PastRun& run : runs) {
        text += "\n" + titleOf(run) + ": " + sentenceOf(run.state) + "\n";
        for (const RunRecord& breadcrumb : run.breadcrumbs) {
            text += "  " + timestamp(breadcrumb.time) + "  " + breadcrumb.text + "\n";
        }
    }
    std::fputs(text.c_str(), stdout);
}

Json objectOf(const PastRun& run) {
    Json object = {{"file", run.file.string()}, {"state", nameOf(run.state)}, {"program", nullptr},
                   {"process", nullptr},        {"start", nullptr},           {"end", nullptr}};
    if (run.start) {
        object["program"] = run.start->text;
        object["process"] = run.start->process;
        object["start"] = timestamp(run.start->time);
    }
    if (run.end) object["end"] = timestamp(run.end->time);
    object["breadcrumbs"] = Json::array();
    for (const RunRecord& breadcrumb : run.breadcrumbs) {
        object["breadcrumbs"].push_back(
            {{"time", timestamp(breadcrumb.time)}, {"text", breadcrumb.text}});
    }
    return object;
}

void printJson(const EventRecord& events, const std::vector<PastRun>& runs) {
    const auto print = [](const Json& object) {
        std::printf("%s\n", object.dump(-1, ' ', false, Json::error_handler_t::replace).c_str());
    };
    print({{"events", events.path.string()}, {"exists", events.exists}});
    for (const PastRun& run : runs) print(objectOf(run));
}

}  // namespace

Result<void> showDiagnostics(const DiagnosticsOptions& options,
                             const std::optional<std::filesystem::path>& folder) {
    if (!folder) {
        return Error{"quillmere.commandline", 1,
                     "There is no folder for records; set HOME or XDG_STATE_HOME."};
    }
    const std::vector<PastRun> runs = RunFolder(*folder).runs();
    std::error_code ignored;
    EventRecord events{*folder / EventFile::name, false};
    events.exists = std::filesystem::exists(events.path, ignored);
    options.json ? printJson(events, runs) : printText(events, runs);
    return {};
}

}  // namespace quillmere::cli
