// HTTP on the desktop, by libcurl.
#pragma once

#include <filesystem>
#include <memory>

#include "Platform/Dispatch/Dispatch.h"
#include "Platform/URLSession/URLSession.h"

namespace quillmere {

/// Each request has a block of the global queue to itself, where its handler is called as well.
/// Connections are not kept, nor cookies, nor answers. The proxy that the environment names
/// (`https_proxy` and its kin) is used.
///
/// At most 5 redirects are followed. A header of more than 256 KiB counts as an answer that is too
/// long.
class DesktopURLSession final : public URLSession {
public:
    /// `dispatch` must outlive the session and its tasks. `certificateAuthorities` is a PEM file of
    /// those whose certificates are trusted; empty means those that the system trusts.
    explicit DesktopURLSession(Dispatch& dispatch,
                               std::filesystem::path certificateAuthorities = {});
    ~DesktopURLSession() override;

    std::unique_ptr<URLSessionDataTask> dataTaskWithRequest(
        URLRequest request, CompletionHandler completionHandler) override;

private:
    class Requests;
    class Task;

    Dispatch& dispatch_;
    const std::filesystem::path certificateAuthorities_;
    const std::shared_ptr<Requests> requests_;
};

}  // namespace quillmere
