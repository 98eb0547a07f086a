#include "Desktop/Analytics/RecordedEvent.h"

#include <unistd.h>

#include <nlohmann/json.hpp>

#include "Desktop/Application/Timestamp.h"

namespace quillmere {
namespace {

using Json = nlohmann::ordered_json;

Json beginning(std::chrono::system_clock::time_point time) {
    return {{"time", timestamp(time)}, {"process", getpid()}};
}

std::string lineOf(const Json& object) {
    return object.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace

std::string eventLine(const RecordedEvent& event) {
    Json object = beginning(event.time);
    object["event"] = event.name;
    object["parameters"] = nullptr;
    if (event.parameters) object["parameters"] = *event.parameters;
    return lineOf(object);
}

std::string droppedLine(std::chrono::system_clock::time_point time, std::uint64_t count) {
    Json object = beginning(time);
    object["dropped"] = count;
    return lineOf(object);
}

}  // namespace quillmere
