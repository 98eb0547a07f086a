// Remote values from one JSON document on a server, if there is a server.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Platform/Application/Bundle.h"
#include "Platform/Application/Console.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/FileManager/FileManager.h"
#include "Platform/RemoteConfig/RemoteConfig.h"
#include "Platform/URLSession/URLSession.h"

namespace quillmere {

/// The endpoint answers a GET with a JSON object of booleans, numbers and texts, of 1 MiB at most.
/// A value of another kind than its default doesn't count, and the default holds.
///
/// How a fetch ends
///   * `usedPreFetchedData`: without an endpoint, where neither network nor disk is touched; within
///     the minimum fetch interval; and where the server says that its document is unchanged (304).
///   * `fetchedFromRemote`: with a new document (200), which is kept on disk for later processes.
///   * `failed`: otherwise. The error is the session's, or of the domain `errorDomain` with the
///     HTTP status as its code, which is 200 for a document that can't be understood.
class DesktopRemoteConfig final : public RemoteConfig {
public:
    static constexpr const char* errorDomain = "quillmere.remoteconfig";

    /// What a fetch uses when it ends: all of it must outlive the session.
    struct Ports {
        URLSession& session;
        FileManager& fileManager;
        Dispatch& dispatch;
        const Bundles& bundles;
        Console& console;
    };

    using WallClock = std::function<std::chrono::system_clock::time_point()>;

    /// An empty `endpoint` means that there is no server; without a `cacheFolder`, nothing is kept
    /// for later processes.
    DesktopRemoteConfig(const Ports& ports, std::string endpoint,
                        std::optional<std::filesystem::path> cacheFolder,
                        WallClock now = std::chrono::system_clock::now);

    void setDefaultsFromPlistFileName(std::string_view fileName) override;
    void setConfigSettings(const RemoteConfigSettings& settings) override;
    void fetchAndActivateWithCompletionHandler(FetchHandler completionHandler) override;
    RemoteConfigValue objectForKeyedSubscript(std::string_view key) const override;

private:
    struct State;

    const Ports ports_;
    const std::string endpoint_;
    const std::shared_ptr<State> state_;  // shared with the fetch that is under way
};

}  // namespace quillmere
