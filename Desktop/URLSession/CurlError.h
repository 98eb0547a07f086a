// What libcurl complains of, in the application's words.
#pragma once

#include <curl/curl.h>

#include <string>

#include "Base/Error.h"
#include "Platform/URLSession/URLSession.h"

namespace quillmere {

/// `host` is named in the sentence; empty where the request names none.
Error urlError(URLErrorCode code, const std::string& host);

/// `code` is anything but success.
Error urlError(CURLcode code, const std::string& host);

}  // namespace quillmere
