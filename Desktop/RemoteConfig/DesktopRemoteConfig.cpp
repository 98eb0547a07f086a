#include "Desktop/RemoteConfig/DesktopRemoteConfig.h"

#include <algorithm>
#include <mutex>
#include <nlohmann/json.hpp>
#include <utility>

#include "Desktop/RemoteConfig/ConfigCache.h"
#include "Desktop/RemoteConfig/ConfigDocument.h"
#include "Desktop/RemoteConfig/PropertyList.h"

namespace quillmere {
namespace {

Error failure(int status, std::string sentence, std::vector<std::string> values = {}) {
    return {DesktopRemoteConfig::errorDomain, status, std::move(sentence), std::move(values)};
}

std::string entityTagOf(const HTTPURLResponse& response) {
    const auto field = response.allHeaderFields.find("etag");
    return field == response.allHeaderFields.end() ? std::string() : field->second;
}

/// Whether a server's text may go into a header again.
bool isHeaderText(const std::string& text) {
    return !text.empty() &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= 0x20 && c < 0x7f; });
}

}  // namespace

struct DesktopRemoteConfig::State {
    Console& console;
    const WallClock now;
    const std::optional<ConfigCache> cache;

    mutable std::mutex mutex;
    RemoteConfigSettings settings;
    ConfigValues defaults;
    std::optional<FetchedConfig> fetched;  // in force, if there is one

    State(Console& c, WallClock clock, std::optional<ConfigCache> kept)
        : console(c), now(std::move(clock)), cache(std::move(kept)) {
        if (cache) fetched = cache->load();
    }

    /// A clock that was set back since makes nothing fresh.
    bool isFresh() const {
        if (!fetched) return false;
        const auto age = now() - fetched->fetchedAt;
        return age >= age.zero() && age < settings.minimumFetchInterval;
    }

    Result<RemoteConfigFetchStatus> take(const Result<URLAnswer>& answer) {
        if (!answer) return answer.error();
        const int status = answer->response ? answer->response->statusCode : 0;
        std::unique_lock lock(mutex);
        const bool unchanged = status == 304 && fetched;
        if (unchanged) {
            fetched->fetchedAt = now();
        } else if (status == 200) {
            auto values = configValues(nlohmann::json::parse(answer->data, nullptr, false));
            if (!values)
                return failure(status, "The server of the remote values gave no JSON object.");
            fetched = FetchedConfig{*std::move(values), entityTagOf(*answer->response), now()};
        } else {
            return failure(status, "The server of the remote values answered with the status %@.",
                           {std::to_string(status)});
        }
        const FetchedConfig taken = *fetched;
        lock.unlock();  // no reader waits for the disk
        keep(taken);
        return unchanged ? RemoteConfigFetchStatus::usedPreFetchedData
                         : RemoteConfigFetchStatus::fetchedFromRemote;
    }

    void keep(const FetchedConfig& taken) const {
        if (!cache) return;
        const auto stored = cache->store(taken);
        if (!stored) {
            console.report(
                {stored.error(), Error{errorDomain, stored.error().code,
                                       "The remote values are not kept for the next start."}});
        }
    }
};

DesktopRemoteConfig::DesktopRemoteConfig(const Ports& ports, std::string endpoint,
                                         std::optional<std::filesystem::path> cacheFolder,
                                         WallClock now)
    : ports_(ports),
      endpoint_(std::move(endpoint)),
      state_(std::make_shared<State>(
          ports.console, std::move(now),
          endpoint_.empty() || !cacheFolder
              ? std::nullopt
              : std::optional(ConfigCache(ports.fileManager, *cacheFolder, endpoint_)))) {}

void DesktopRemoteConfig::setDefaultsFromPlistFileName(std::string_view fileName) {
    const auto path =
        ports_.bundles.bundleForClass("RemoteConfig").urlForResource(fileName, "plist");
    std::optional<ConfigValues> defaults;
    if (path) {
        const auto contents = ports_.fileManager.contentsOfFile(*path);
        if (contents) defaults = configValuesFromPropertyList(*contents);
    }
    if (!defaults) {
        ports_.console.report(
            {Error{errorDomain,
                   0,
                   "The property list %@ can't be read; no remote value has a default.",
                   {std::string(fileName)}}});
    }
    const std::lock_guard lock(state_->mutex);
    state_->defaults = std::move(defaults).value_or(ConfigValues());
}

void DesktopRemoteConfig::setConfigSettings(const RemoteConfigSettings& settings) {
    const std::lock_guard lock(state_->mutex);
    state_->settings = settings;
}

void DesktopRemoteConfig::fetchAndActivateWithCompletionHandler(FetchHandler completionHandler) {
    std::unique_lock lock(state_->mutex);
    if (endpoint_.empty() || state_->isFresh()) {
        lock.unlock();
        ports_.dispatch.globalQueue(QualityOfService::utility)
            .async([handler = std::move(completionHandler)] {
                handler(RemoteConfigFetchStatus::usedPreFetchedData, std::nullopt);
            });
        return;
    }

    URLRequest request;
    request.url = endpoint_;
    request.timeoutInterval = state_->settings.fetchTimeout;
    request.allHTTPHeaderFields["Accept"] = "application/json";
    if (state_->fetched && isHeaderText(state_->fetched->entityTag)) {
        request.allHTTPHeaderFields["If-None-Match"] = state_->fetched->entityTag;
    }
    lock.unlock();
    ports_.session
        .dataTaskWithRequest(std::move(request),
                             [state = state_, handler = std::move(completionHandler)](
                                 const Result<URLAnswer>& answer) {
                                 const auto status = state->take(answer);
                                 if (status) {
                                     handler(*status, std::nullopt);
                                 } else {
                                     handler(RemoteConfigFetchStatus::failed, status.error());
                                 }
                             })
        ->resume();
}

RemoteConfigValue DesktopRemoteConfig::objectForKeyedSubscript(std::string_view key) const {
    const std::lock_guard lock(state_->mutex);
    const auto byDefault = state_->defaults.find(key);
    const bool hasDefault = byDefault != state_->defaults.end();
    if (state_->fetched) {
        const auto remote = state_->fetched->values.find(key);
        if (remote != state_->fetched->values.end() &&
            (!hasDefault || remote->second.index() == byDefault->second.index())) {
            return remoteConfigValue(remote->second, RemoteConfigSource::remote);
        }
    }
    if (hasDefault) return remoteConfigValue(byDefault->second, RemoteConfigSource::defaults);
    return {};
}

}  // namespace quillmere
