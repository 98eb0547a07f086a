#include "Base/Invariant.h"

#include <cstdlib>

namespace quillmere {

void invariantBroken() noexcept { std::abort(); }

}  // namespace quillmere
