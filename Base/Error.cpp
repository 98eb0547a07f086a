#include "Base/Error.h"

#include <utility>

#include "Base/FormatString.h"

namespace quillmere {

Error::Error(std::string domain_, int code_, std::string words, std::vector<std::string> values_)
    : domain(std::move(domain_)),
      code(code_),
      localizedDescription(values_.empty() ? words : formatString(words, values_)),
      sentence(std::move(words)),
      values(std::move(values_)) {}

}  // namespace quillmere
