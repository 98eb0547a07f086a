// An address that a request may go to.
#pragma once

#include <string>

#include "Base/Result.h"

namespace quillmere {

struct RequestURL {
    std::string text;
    std::string host;
    std::string port;
    bool isSecure = false;

    /// Fails for what is no absolute address, and for any protocol but HTTP with and without TLS.
    static Result<RequestURL> parse(const std::string& text);

    bool hasOriginOf(const RequestURL& other) const {
        return host == other.host && port == other.port && isSecure == other.isSecure;
    }
};

}  // namespace quillmere
