// The names of process-wide notifications.
#pragma once

#include <string_view>

namespace quillmere {

/// Posted when work that can't go on in the background has to end.
inline constexpr std::string_view cancelSaveVideo = "cancelSaveVideo";

}  // namespace quillmere
