#include "Desktop/URLSession/RequestURL.h"

#include "Desktop/URLSession/CurlError.h"
#include "Desktop/URLSession/CurlHandles.h"

namespace quillmere {
namespace {

std::string part(CURLU* url, CURLUPart which) {
    char* text = nullptr;
    if (curl_url_get(url, which, &text, CURLU_DEFAULT_PORT) != CURLUE_OK) return {};
    return CurlText(text).get();
}

}  // namespace

Result<RequestURL> RequestURL::parse(const std::string& text) {
    const CurlURL url(curl_url());
    // An embedded zero would end the text early for libcurl.
    if (!url || text.find('\0') != std::string::npos) return urlError(URLErrorCode::badURL, "");
    const CURLUcode parsed =
        curl_url_set(url.get(), CURLUPART_URL, text.c_str(), CURLU_NON_SUPPORT_SCHEME);
    if (parsed != CURLUE_OK) return urlError(URLErrorCode::badURL, "");
    const std::string scheme = part(url.get(), CURLUPART_SCHEME);
    if (scheme != "http" && scheme != "https") return urlError(URLErrorCode::unsupportedURL, "");
    return RequestURL{text, part(url.get(), CURLUPART_HOST), part(url.get(), CURLUPART_PORT),
                      scheme == "https"};
}

}  // namespace quillmere
