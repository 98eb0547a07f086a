#include "Desktop/URLSession/CurlError.h"

#include "Base/Invariant.h"

namespace quillmere {
namespace {

/// With a place for the server's name.
const char* sentenceOf(URLErrorCode code) {
    switch (code) {
        case URLErrorCode::unknown:
            return "The request failed for want of memory or of another resource of this machine.";
        case URLErrorCode::cancelled:
            return "The request was cancelled.";
        case URLErrorCode::badURL:
            return "The request's address or header is malformed.";
        case URLErrorCode::timedOut:
            return "The server %@ took too long to answer. Try again later.";
        case URLErrorCode::unsupportedURL:
            return "Only addresses that begin with http or https can be reached.";
        case URLErrorCode::cannotFindHost:
            return "The server %@ can't be found. Check the connection to the internet.";
        case URLErrorCode::cannotConnectToHost:
            return "The server %@ can't be reached. Check the connection to the internet.";
        case URLErrorCode::networkConnectionLost:
            return "The connection to %@ was lost. Try again.";
        case URLErrorCode::httpTooManyRedirects:
            return "The server %@ redirects the request without end.";
        case URLErrorCode::badServerResponse:
            return "The answer of the server %@ can't be understood.";
        case URLErrorCode::appTransportSecurityRequiresSecureConnection:
            return "The server %@ redirects to an address that is not secure.";
        case URLErrorCode::dataLengthExceedsMaximum:
            return "The answer of the server %@ is too long.";
        case URLErrorCode::secureConnectionFailed:
            return "A secure connection to %@ can't be made.";
        case URLErrorCode::serverCertificateUntrusted:
            return "The certificate of the server %@ can't be trusted. Check the date of this "
                   "machine and its connection.";
    }
    invariantBroken();
}

URLErrorCode codeOf(CURLcode code) {
    switch (code) {
        case CURLE_URL_MALFORMAT:
            return URLErrorCode::badURL;
        case CURLE_OPERATION_TIMEDOUT:
            return URLErrorCode::timedOut;
        case CURLE_COULDNT_RESOLVE_HOST:
        case CURLE_COULDNT_RESOLVE_PROXY:
            return URLErrorCode::cannotFindHost;
        case CURLE_COULDNT_CONNECT:
        case CURLE_PROXY:
            return URLErrorCode::cannotConnectToHost;
        case CURLE_WEIRD_SERVER_REPLY:
        case CURLE_BAD_CONTENT_ENCODING:
        case CURLE_UNSUPPORTED_PROTOCOL:  // the request's is known: it is the server's answer
        case CURLE_HTTP2:
        case CURLE_HTTP2_STREAM:
            return URLErrorCode::badServerResponse;
        case CURLE_PEER_FAILED_VERIFICATION:
            return URLErrorCode::serverCertificateUntrusted;
        case CURLE_SSL_CONNECT_ERROR:
        case CURLE_SSL_CIPHER:
        case CURLE_SSL_CACERT_BADFILE:
        case CURLE_SSL_ISSUER_ERROR:
            return URLErrorCode::secureConnectionFailed;
        case CURLE_GOT_NOTHING:
        case CURLE_PARTIAL_FILE:
        case CURLE_RECV_ERROR:
        case CURLE_SEND_ERROR:
            return URLErrorCode::networkConnectionLost;
        default:
            return URLErrorCode::unknown;
    }
}

}  // namespace

Error urlError(URLErrorCode code, const std::string& host) {
    return {URLSession::errorDomain, static_cast<int>(code), sentenceOf(code), {host}};
}

Error urlError(CURLcode code, const std::string& host) { return urlError(codeOf(code), host); }

}  // namespace quillmere
