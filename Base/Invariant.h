// The one exit for a state that only a bug of our own can produce.
#pragma once

namespace quillmere {

/// Ends the process at once, with no message and no clean-up (SIGABRT, so that a core is left).
///
/// Never for what a user, a file or a device can cause: that is an `Error`.
[[noreturn]] void invariantBroken() noexcept;

}  // namespace quillmere
