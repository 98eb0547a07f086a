// HTTP requests: the only way in which the application reaches a server.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Base/Result.h"

namespace quillmere {

/// What is asked of a server.
struct URLRequest {
    /// Absolute, `http` or `https`, percent-encoded: ASCII without blanks.
    std::string url;
    std::string httpMethod = "GET";
    std::map<std::string, std::string> allHTTPHeaderFields;
    std::vector<std::byte> httpBody;
    /// For all of the request, redirects included. Above zero.
    std::chrono::milliseconds timeoutInterval{60'000};
    /// A longer body of the answer is an error.
    std::size_t maximumDataLength = std::size_t{1} << 20;
};

struct HTTPURLResponse {
    int statusCode = 0;
    /// Names in lower case; the values of a repeated field in their order, separated by ", ".
    std::map<std::string, std::string> allHeaderFields;
};

/// An answer that came whole. Every status is an answer, those that tell of failure too.
struct URLAnswer {
    std::vector<std::byte> data;
    /// Nothing where the answer came by another protocol than HTTP.
    std::optional<HTTPURLResponse> response;
};

/// Codes of errors in the domain `URLSession::errorDomain`.
enum class URLErrorCode {
    unknown = -1,
    cancelled = -999,
    badURL = -1000,
    timedOut = -1001,
    unsupportedURL = -1002,
    cannotFindHost = -1003,
    cannotConnectToHost = -1004,
    networkConnectionLost = -1005,
    httpTooManyRedirects = -1007,
    badServerResponse = -1011,
    appTransportSecurityRequiresSecureConnection = -1022,
    dataLengthExceedsMaximum = -1103,
    secureConnectionFailed = -1200,
    serverCertificateUntrusted = -1202,
};

/// A request that was made ready.
class URLSessionDataTask {
public:
    virtual ~URLSessionDataTask() = default;

    /// Starts the request and returns at once; later calls, and calls after the session's end, do
    /// nothing. The request goes on without its task object.
    virtual void resume() = 0;
};

/// Guarantees of every implementation
///   * May be used from any thread; requests run side by side.
///   * The handler of a resumed task is called exactly once, on a background thread, never inside
///     `resume`.
///   * Only `http` and `https` are spoken, and the server's certificate is checked.
///   * Redirects of a GET without a body are followed, a few times, and never from `https` to
///     `http`; to another host or port they go without the request's header fields. A redirect of
///     any other request is its answer.
///   * The end of the session cancels what is under way. It returns when no handler is running
///     any more, save one that ends the session itself; a handler must not wait for the thread
///     that does.
class URLSession {
public:
    static constexpr const char* errorDomain = "NSURLErrorDomain";

    using CompletionHandler = std::function<void(Result<URLAnswer>)>;

    virtual ~URLSession() = default;

    virtual std::unique_ptr<URLSessionDataTask> dataTaskWithRequest(
        URLRequest request, CompletionHandler completionHandler) = 0;
};

}  // namespace quillmere
