#include "Base/FormatString.h"

#include <cstddef>

namespace quillmere {

std::string formatString(std::string_view format, const std::vector<std::string>& values) {
    std::string text;
    std::size_t next = 0;
    for (std::size_t i = 0; i < format.size(); ++i) {
        const std::string_view rest = format.substr(i);
        if (rest.starts_with("%%")) {
            text += '%';
            i += 1;
        } else if (rest.starts_with("%@") && next < values.size()) {
            text += values[next++];
            i += 1;
        } else if (rest.size() >= 4 && rest[0] == '%' && rest.substr(2, 2) == "$@" &&
                   rest[1] >= '1' && static_cast<std::size_t>(rest[1] - '1') < values.size()) {
            text += values[rest[1] - '1'];
            i += 3;
        } else {
            text += format[i];
        }
    }
    return text;
}

}  // namespace quillmere
