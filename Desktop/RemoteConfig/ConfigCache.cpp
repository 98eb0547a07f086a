#include "Desktop/RemoteConfig/ConfigCache.h"

#include <nlohmann/json.hpp>
#include <span>
#include <system_error>
#include <utility>

#include "Desktop/RemoteConfig/ConfigDocument.h"

namespace quillmere {
namespace {

using nlohmann::json;
using std::chrono::seconds;
using std::chrono::system_clock;

constexpr const char* endpointKey = "endpoint";
constexpr const char* entityTagKey = "entityTag";
constexpr const char* fetchedAtKey = "fetchedAt";  // whole seconds since 1970
constexpr const char* valuesKey = "values";

// The clock counts nanoseconds and ends in the year 2262.
constexpr std::uint64_t latestTime = 9'000'000'000;

}  // namespace

ConfigCache::ConfigCache(FileManager& fileManager, const std::filesystem::path& folder,
                         std::string endpoint)
    : fileManager_(fileManager),
      file_(folder / "RemoteConfig.json"),
      endpoint_(std::move(endpoint)) {}

std::optional<FetchedConfig> ConfigCache::load() const {
    const auto contents = fileManager_.contentsOfFile(file_);
    if (!contents) return std::nullopt;
    const json kept = json::parse(*contents, nullptr, false);
    if (!kept.is_object() || kept.value(endpointKey, json()) != endpoint_) return std::nullopt;
    const json entityTag = kept.value(entityTagKey, json());
    const json fetchedAt = kept.value(fetchedAtKey, json());
    auto values = configValues(kept.value(valuesKey, json()));
    if (!entityTag.is_string() || !fetchedAt.is_number_unsigned() || !values) return std::nullopt;
    const auto sinceEpoch = fetchedAt.get<std::uint64_t>();
    if (sinceEpoch > latestTime) return std::nullopt;
    return FetchedConfig{*std::move(values), entityTag.get<std::string>(),
                         system_clock::time_point(seconds(sinceEpoch))};
}

Result<void> ConfigCache::store(const FetchedConfig& fetched) const {
    const auto sinceEpoch = fetched.fetchedAt.time_since_epoch();
    const json kept = {{endpointKey, endpoint_},
                       {entityTagKey, fetched.entityTag},
                       {fetchedAtKey, std::chrono::floor<seconds>(sinceEpoch).count()},
                       {valuesKey, configDocument(fetched.values)}};
    const std::string text = kept.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
    std::error_code ignored;  // the writing tells
    std::filesystem::create_directories(file_.parent_path(), ignored);
    return fileManager_.writeFile(file_, std::as_bytes(std::span(text)), WriteExisting::replace);
}

}  // namespace quillmere
