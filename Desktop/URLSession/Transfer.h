// One HTTP request on its way.
#pragma once

#include <atomic>
#include <chrono>
#include <filesystem>

#include "Base/Result.h"
#include "Desktop/URLSession/CurlHandles.h"
#include "Desktop/URLSession/RequestURL.h"
#include "Platform/URLSession/URLSession.h"

namespace quillmere {

class Transfer {
public:
    static constexpr int maximumRedirects = 5;
    static constexpr std::size_t maximumHeaderLength = std::size_t{256} << 10;

    /// `certificateAuthorities` is a PEM file of whom to trust; empty means whom the system trusts.
    Transfer(URLRequest request, std::filesystem::path certificateAuthorities);

    /// Blocks until the answer is whole, or the time is over, or somebody cancels. To be called
    /// once.
    Result<URLAnswer> perform();

    /// Makes `perform` return at once, also one that comes later. Any thread, at any time.
    void cancel();

private:
    struct Hop;

    /// One request and its answer, without following where it points to.
    Result<URLAnswer> performHop(const RequestURL& url, bool withHeaders, std::string& redirect);
    bool configure(Hop& hop, const RequestURL& url, bool withHeaders) const;
    CURLcode drive(CURL* easy);

    const URLRequest request_;
    const std::filesystem::path certificateAuthorities_;
    const CurlMulti multi_;
    std::atomic<bool> cancelled_ = false;
    std::chrono::steady_clock::time_point deadline_;
};

}  // namespace quillmere
