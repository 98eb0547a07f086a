#include "Desktop/URLSession/Transfer.h"

#include <algorithm>
#include <cctype>
#include <limits>
#include <new>
#include <string_view>
#include <utility>

#include "Desktop/URLSession/CurlError.h"

namespace quillmere {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// Once for the process, at the first request; libcurl needs no end.
bool startCurl() {
    static const CURLcode started = curl_global_init(CURL_GLOBAL_DEFAULT);
    return started == CURLE_OK;
}

bool isPrintable(std::string_view text) {
    return std::none_of(text.begin(), text.end(),
                        [](unsigned char c) { return c < 0x20 || c == 0x7f; });
}

/// What a method or a field's name is made of.
bool isToken(std::string_view text) {
    return !text.empty() && text.find_first_not_of(
                                "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789"
                                "!#$%&'*+-.^_`|~") == std::string_view::npos;
}

bool isWellFormed(const URLRequest& request) {
    return isToken(request.httpMethod) &&
           std::all_of(
               request.allHTTPHeaderFields.begin(), request.allHTTPHeaderFields.end(),
               [](const auto& field) { return isToken(field.first) && isPrintable(field.second); });
}

bool append(CurlList& list, const std::string& line) {
    curl_slist* longer = curl_slist_append(list.get(), line.c_str());
    if (!longer) return false;
    (void)list.release();
    list.reset(longer);
    return true;
}

HTTPURLResponse responseOf(CURL* easy) {
    HTTPURLResponse response;
    long status = 0;
    curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &status);
    response.statusCode = static_cast<int>(status);
    curl_header* header = nullptr;
    while ((header = curl_easy_nextheader(easy, CURLH_HEADER, -1, header))) {
        std::string name = header->name;
        std::transform(name.begin(), name.end(), name.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        auto [field, isNew] = response.allHeaderFields.try_emplace(std::move(name), header->value);
        if (!isNew) field->second += std::string(", ") + header->value;
    }
    return response;
}

bool isRedirect(int status) {
    return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

}  // namespace

/// The handle of one hop, and what its callbacks gather.
struct Transfer::Hop {
    CurlEasy easy{curl_easy_init()};
    CurlList headers;
    std::size_t maximumDataLength = 0;
    std::size_t headerLength = 0;
    std::vector<std::byte> data;
    bool headerEnded = false;
    bool tooLong = false;

    static std::size_t takeHeader(char* line, std::size_t size, std::size_t count, void* self) {
        auto& hop = *static_cast<Hop*>(self);
        hop.headerLength += size * count;
        const std::string_view text(line, size * count);
        if (text.starts_with("HTTP/")) hop.headerEnded = false;
        if (text == "\r\n" || text == "\n") hop.headerEnded = true;
        hop.tooLong = hop.headerLength > maximumHeaderLength;
        return hop.tooLong ? 0 : size * count;
    }

    static std::size_t takeData(char* bytes, std::size_t size, std::size_t count, void* self) {
        auto& hop = *static_cast<Hop*>(self);
        const std::size_t length = size * count;
        hop.tooLong = length > hop.maximumDataLength - hop.data.size();
        if (hop.tooLong) return 0;
        try {
            const auto* first = reinterpret_cast<const std::byte*>(bytes);
            hop.data.insert(hop.data.end(), first, first + length);
        } catch (const std::bad_alloc&) {  // must not pass through libcurl
            hop.tooLong = true;
            return 0;
        }
        return length;
    }
};

Transfer::Transfer(URLRequest request, std::filesystem::path certificateAuthorities)
    : request_(std::move(request)),
      certificateAuthorities_(std::move(certificateAuthorities)),
      multi_(startCurl() ? curl_multi_init() : nullptr) {}

void Transfer::cancel() {
    cancelled_ = true;
    if (multi_) curl_multi_wakeup(multi_.get());
}

// Redirects are followed here because libcurl would send the request's own header fields, keys
// among them, to whatever host a redirect names.
Result<URLAnswer> Transfer::perform() {
    Result<RequestURL> url = RequestURL::parse(request_.url);
    if (!url) return url.error();
    if (!isWellFormed(request_)) return urlError(URLErrorCode::badURL, url->host);
    deadline_ = steady_clock::now() + request_.timeoutInterval;

    const bool follows = request_.httpMethod == "GET" && request_.httpBody.empty();
    bool withHeaders = true;
    for (int redirects = 0;; ++redirects) {
        std::string redirect;
        Result<URLAnswer> answer = performHop(*url, withHeaders, redirect);
        if (!answer || redirect.empty() || !follows) return answer;
        if (redirects == maximumRedirects) {
            return urlError(URLErrorCode::httpTooManyRedirects, url->host);
        }
        Result<RequestURL> next = RequestURL::parse(redirect);
        if (!next) return urlError(URLErrorCode::badServerResponse, url->host);
        if (url->isSecure && !next->isSecure) {
            return urlError(URLErrorCode::appTransportSecurityRequiresSecureConnection, url->host);
        }
        withHeaders = withHeaders && next->hasOriginOf(*url);
        url = std::move(next);
    }
}

Result<URLAnswer> Transfer::performHop(const RequestURL& url, bool withHeaders,
                                       std::string& redirect) {
    Hop hop;
    if (!multi_ || !hop.easy || !configure(hop, url, withHeaders)) {
        return urlError(CURLE_FAILED_INIT, url.host);
    }
    const CURLcode code = drive(hop.easy.get());
    if (cancelled_) return urlError(URLErrorCode::cancelled, url.host);
    if (hop.tooLong) return urlError(URLErrorCode::dataLengthExceedsMaximum, url.host);
    if (code != CURLE_OK) return urlError(code, url.host);
    // libcurl takes the end of the connection for that of the header.
    if (!hop.headerEnded) return urlError(URLErrorCode::networkConnectionLost, url.host);

    URLAnswer answer{std::move(hop.data), responseOf(hop.easy.get())};
    if (isRedirect(answer.response->statusCode)) {
        const char* target = nullptr;
        curl_easy_getinfo(hop.easy.get(), CURLINFO_REDIRECT_URL, &target);
        if (target) redirect = target;
    }
    return answer;
}

bool Transfer::configure(Hop& hop, const RequestURL& url, bool withHeaders) const {
    bool taken = true;
    const auto set = [&](CURLoption option, auto value) {
        taken = curl_easy_setopt(hop.easy.get(), option, value) == CURLE_OK && taken;
    };

    set(CURLOPT_URL, url.text.c_str());
    set(CURLOPT_PROTOCOLS_STR, "http,https");
    set(CURLOPT_SSL_VERIFYPEER, 1L);
    set(CURLOPT_SSL_VERIFYHOST, 2L);
    set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    if (!certificateAuthorities_.empty()) {
        set(CURLOPT_CAINFO, certificateAuthorities_.c_str());
        set(CURLOPT_CAPATH, static_cast<const char*>(nullptr));
    }
    set(CURLOPT_USERAGENT, "Quillmere");
    // No signals, which belong to the whole process; and no waiting for a name's look-up at the
    // end of a request that has ended otherwise.
    set(CURLOPT_NOSIGNAL, 1L);
    set(CURLOPT_QUICK_EXIT, 1L);

    // libcurl reads 0 as no limit, and takes no more than an int holds. A request that is late
    // already fails at once with 1.
    const auto left = std::chrono::ceil<milliseconds>(deadline_ - steady_clock::now()).count();
    set(CURLOPT_TIMEOUT_MS, std::clamp<long>(left, 1, std::numeric_limits<int>::max()));

    const std::string& method = request_.httpMethod;
    if (method == "HEAD") {
        set(CURLOPT_NOBODY, 1L);
    } else if (method != "GET" || !request_.httpBody.empty()) {
        set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request_.httpBody.size()));
        set(CURLOPT_POSTFIELDS, request_.httpBody.empty()
                                    ? ""
                                    : reinterpret_cast<const char*>(request_.httpBody.data()));
        set(CURLOPT_CUSTOMREQUEST, method.c_str());
    }

    // Without a value: what libcurl would add to a body of itself.
    bool listed = append(hop.headers, "Expect:") && append(hop.headers, "Content-Type:");
    if (withHeaders) {
        for (const auto& [name, value] : request_.allHTTPHeaderFields) {
            // libcurl leaves a field without a value out unless a semicolon asks for it.
            std::string line = name;
            line += value.empty() ? ";" : ": " + value;
            listed = append(hop.headers, line) && listed;
        }
    }
    set(CURLOPT_HTTPHEADER, hop.headers.get());

    hop.maximumDataLength = request_.maximumDataLength;
    set(CURLOPT_HEADERFUNCTION, &Hop::takeHeader);
    set(CURLOPT_HEADERDATA, static_cast<void*>(&hop));
    set(CURLOPT_WRITEFUNCTION, &Hop::takeData);
    set(CURLOPT_WRITEDATA, static_cast<void*>(&hop));
    return taken && listed;
}

CURLcode Transfer::drive(CURL* easy) {
    if (curl_multi_add_handle(multi_.get(), easy) != CURLM_OK) return CURLE_FAILED_INIT;
    int running = 1;
    CURLMcode multi = CURLM_OK;
    while (multi == CURLM_OK && running > 0 && !cancelled_) {
        multi = curl_multi_perform(multi_.get(), &running);
        // A wake-up before the wait ends it too, so that no cancelling is missed.
        if (multi == CURLM_OK && running > 0) {
            multi = curl_multi_poll(multi_.get(), nullptr, 0, 1000, nullptr);
        }
    }
    CURLcode code = CURLE_FAILED_INIT;
    int left = 0;
    while (const CURLMsg* message = curl_multi_info_read(multi_.get(), &left)) {
        if (message->msg == CURLMSG_DONE) code = message->data.result;
    }
    curl_multi_remove_handle(multi_.get(), easy);
    return code;
}

}  // namespace quillmere
