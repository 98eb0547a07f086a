// The one place that talks to the service of remote values.
#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include "Base/Error.h"
#include "Platform/Application/Console.h"
#include "Platform/RemoteConfig/RemoteConfig.h"
#include "Quillmere/Models/Enhance/ModelWarmUp.h"

namespace quillmere {

/// The remote keys. Read them at the moment of use and keep no copy: a value that is activated
/// meanwhile applies from the next reading.
namespace RemoteConfigKey {

/// Boolean: the request for a banner asks for a collapsible one.
inline constexpr std::string_view showCollapsibleBanner = "showCollapsibleBanner";
/// Number, read as an integer: the ad of a conversion is considered from this many saves on.
inline constexpr std::string_view convertAdDisplayThreshold = "convertAdDisplayThreshold";
/// Boolean: the fuller of the two share screens.
inline constexpr std::string_view showEnhancedShareView = "showEnhancedShareView";
/// Boolean: a network is prepared at start.
inline constexpr std::string_view enableWarmUp = "enableWarmUp";

}  // namespace RemoteConfigKey

/// A reader always gets a value, and nothing in the application waits for the server. Any thread.
/// The application object makes one instance, the shared client, at its first touch, and starts
/// the one fetch of the process at launch on its `remoteConfig`.
class RemoteConfigClient {
public:
    /// Loads the defaults and leaves the platform's own fetch settings in force.
    RemoteConfigClient(RemoteConfig& platformConfig, ModelWarmUp& warmUp, Console& console);

    RemoteConfig& remoteConfig;

    /// The completion of the fetch, to be called on the shared client. A failure is printed and
    /// changes nothing; otherwise the values are printed if `asking`, the client that fetched, is
    /// still there, and the network of the style `high` is warmed up if a value says so, on a
    /// thread of its own.
    void fetchCompleted(RemoteConfigFetchStatus status, const std::optional<Error>& error,
                        const std::weak_ptr<const RemoteConfigClient>& asking);

    /// Prints one line for each key, for debugging.
    void logAllValues() const;

private:
    ModelWarmUp& warmUp_;
    Console& console_;
};

}  // namespace quillmere
