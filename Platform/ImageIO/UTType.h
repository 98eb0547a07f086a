// The system's identifiers of picture formats.
#pragma once

#include <string_view>

namespace quillmere {

inline constexpr std::string_view UTTypeJPEG = "public.jpeg";
inline constexpr std::string_view UTTypeHEIC = "public.heic";
inline constexpr std::string_view UTTypePNG = "public.png";

}  // namespace quillmere
