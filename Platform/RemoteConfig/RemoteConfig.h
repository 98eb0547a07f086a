// Values that a server may steer, and that always have an answer.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "Base/Error.h"

namespace quillmere {

/// Where a value came from, with the platform's numbers. `fixed` is what a key has that neither
/// the server nor the defaults know.
enum class RemoteConfigSource : int { remote = 0, defaults = 1, fixed = 2 };

/// How a fetch ended, with the platform's numbers; a platform may know more of them.
enum class RemoteConfigFetchStatus : int {
    fetchedFromRemote = 0,
    usedPreFetchedData = 1,
    failed = 2,
};

/// One value, read in each way. A `fixed` one is empty, false and 0.
struct RemoteConfigValue {
    /// A boolean is "true" or "false", a number the shortest decimal that gives it back.
    std::string stringValue;
    /// A number is true unless it is 0, a text if it is "true", "yes" or "1" in any case.
    bool boolValue = false;
    /// A boolean is 1 or 0, a text the number that all of it tells, or 0.
    double numberValue = 0;
    /// `numberValue` without its fraction, the nearest that fits.
    std::int64_t integerValue = 0;
    RemoteConfigSource source = RemoteConfigSource::fixed;

    friend bool operator==(const RemoteConfigValue&, const RemoteConfigValue&) = default;
};

struct RemoteConfigSettings {
    /// For the whole of a fetch.
    std::chrono::milliseconds fetchTimeout{60'000};
    /// What was fetched less than this ago, by this process or an earlier one, is not fetched
    /// again.
    std::chrono::seconds minimumFetchInterval{std::chrono::hours{12}};

    friend bool operator==(const RemoteConfigSettings&, const RemoteConfigSettings&) = default;
};

/// May be called from any thread; reads never wait for a server. Values that were activated stay in
/// force in later processes.
class RemoteConfig {
public:
    /// `error` is set where, and only where, the fetch failed.
    using FetchHandler =
        std::function<void(RemoteConfigFetchStatus status, const std::optional<Error>& error)>;

    virtual ~RemoteConfig() = default;

    /// Loads the property list of that name, which comes with the application, as the values that
    /// hold where the server has said nothing. A list that can't be read sets none.
    virtual void setDefaultsFromPlistFileName(std::string_view fileName) = 0;

    virtual void setConfigSettings(const RemoteConfigSettings& settings) = 0;

    /// Asks the server and puts what it says into force before the handler is called, once, on a
    /// background thread and never inside this call. After a failure all values stay as they were.
    virtual void fetchAndActivateWithCompletionHandler(FetchHandler completionHandler) = 0;

    /// The value in force: the server's, else the default, else a `fixed` one.
    virtual RemoteConfigValue objectForKeyedSubscript(std::string_view key) const = 0;
};

}  // namespace quillmere
