#include "Quillmere/AppDelegate.h"

#include <memory>

namespace quillmere {

bool AppDelegate::applicationDidFinishLaunching() {
    services_.configure();
    privacy_.setHasUserConsent(true);
    privacy_.setDoNotSell(true);

    const auto client = remoteConfigClient_.get();
    client->remoteConfig.fetchAndActivateWithCompletionHandler(
        [&shared = remoteConfigClient_, asking = std::weak_ptr<const RemoteConfigClient>(client)](
            RemoteConfigFetchStatus status, const std::optional<Error>& error) {
            shared.get()->fetchCompleted(status, error, asking);
        });
    return true;
}

}  // namespace quillmere
