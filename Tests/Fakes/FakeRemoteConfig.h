#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "Platform/Dispatch/Dispatch.h"
#include "Platform/RemoteConfig/RemoteConfig.h"
#include "Tests/Fakes/CallLog.h"

namespace quillmere {

/// Its property lists and its server hold what a test puts there beforehand. Calls are logged,
/// reads as `read KEY`.
class FakeRemoteConfig final : public RemoteConfig {
public:
    using Values = std::map<std::string, RemoteConfigValue, std::less<>>;

    FakeRemoteConfig(CallLog& log, Dispatch& dispatch) : log_(log), dispatch_(dispatch) {}

    std::map<std::string, Values, std::less<>> propertyLists;
    Values server;
    /// Where it is set, the fetch fails.
    std::optional<Error> fetchError;
    RemoteConfigFetchStatus fetchStatus = RemoteConfigFetchStatus::fetchedFromRemote;

    void setDefaultsFromPlistFileName(std::string_view fileName) override {
        log_.record("setDefaultsFromPlistFileName " + std::string(fileName));
        const auto found = propertyLists.find(fileName);
        const std::lock_guard lock(mutex_);
        defaults_ = found == propertyLists.end() ? Values() : found->second;
    }

    void setConfigSettings(const RemoteConfigSettings& settings) override {
        log_.record("setConfigSettings " + std::to_string(settings.fetchTimeout.count()) + " " +
                    std::to_string(settings.minimumFetchInterval.count()));
    }

    void fetchAndActivateWithCompletionHandler(FetchHandler completionHandler) override {
        log_.record("fetchAndActivate");
        dispatch_.globalQueue(QualityOfService::utility)
            .async([this, handler = std::move(completionHandler)] {
                if (fetchError) return handler(RemoteConfigFetchStatus::failed, fetchError);
                {
                    const std::lock_guard lock(mutex_);
                    active_ = server;
                }
                handler(fetchStatus, std::nullopt);
            });
    }

    RemoteConfigValue objectForKeyedSubscript(std::string_view key) const override {
        log_.record("read " + std::string(key));
        const std::lock_guard lock(mutex_);
        for (const auto& [values, source] : {std::pair(&active_, RemoteConfigSource::remote),
                                             std::pair(&defaults_, RemoteConfigSource::defaults)}) {
            const auto found = values->find(key);
            if (found == values->end()) continue;
            RemoteConfigValue value = found->second;
            value.source = source;
            return value;
        }
        return {};
    }

    static RemoteConfigValue boolean(bool value) {
        return {value ? "true" : "false", value, value ? 1.0 : 0.0, value ? 1 : 0, {}};
    }

    static RemoteConfigValue integer(int value) {
        return {std::to_string(value), value != 0, static_cast<double>(value), value, {}};
    }

private:
    CallLog& log_;
    Dispatch& dispatch_;
    mutable std::mutex mutex_;
    Values defaults_;
    Values active_;
};

}  // namespace quillmere
