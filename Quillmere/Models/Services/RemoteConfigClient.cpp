#include "Quillmere/Models/Services/RemoteConfigClient.h"

#include <string>

namespace quillmere {
namespace {

const char* nameOf(RemoteConfigSource source) {
    switch (source) {
        case RemoteConfigSource::remote:
            return "remote";
        case RemoteConfigSource::defaults:
            return "default";
        case RemoteConfigSource::fixed:
            return "static";
    }
    return "unknown";  // a platform may know more of them
}

}  // namespace

RemoteConfigClient::RemoteConfigClient(RemoteConfig& platformConfig, ModelWarmUp& warmUp,
                                       Console& console)
    : remoteConfig(platformConfig), warmUp_(warmUp), console_(console) {
    remoteConfig.setDefaultsFromPlistFileName("RemoteConfigDefaults");
    remoteConfig.setConfigSettings(RemoteConfigSettings());
}

void RemoteConfigClient::fetchCompleted(RemoteConfigFetchStatus status,
                                        const std::optional<Error>& error,
                                        const std::weak_ptr<const RemoteConfigClient>& asking) {
    if (error) return console_.print("RemoteConfig fetch error: " + error->localizedDescription);
    console_.print("RemoteConfig status: " + std::to_string(static_cast<int>(status)));
    if (status == RemoteConfigFetchStatus::failed) return;
    if (const auto client = asking.lock()) client->logAllValues();
    if (remoteConfig.objectForKeyedSubscript(RemoteConfigKey::enableWarmUp).boolValue) {
        warmUp_.scheduleModelWarmUp(EnhanceStyle::high);
    }
}

void RemoteConfigClient::logAllValues() const {
    for (const std::string_view key :
         {RemoteConfigKey::showCollapsibleBanner, RemoteConfigKey::convertAdDisplayThreshold,
          RemoteConfigKey::showEnhancedShareView, RemoteConfigKey::enableWarmUp}) {
        const RemoteConfigValue value = remoteConfig.objectForKeyedSubscript(key);
        console_.print(std::string(key) + ": " + value.stringValue +
                       " (source: " + nameOf(value.source) + ")");
    }
}

}  // namespace quillmere
