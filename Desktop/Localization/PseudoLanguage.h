// Texts in no language, which show what a translation would break.
#pragma once

#include <string>
#include <string_view>

namespace quillmere {

/// `english` with accents, some 40 % longer, between brackets, so that what was cut off is seen,
/// and running from right to left. Placeholders (`%@`, `%1$@`) stay as they are.
std::string pseudolocalized(std::string_view english);

}  // namespace quillmere
