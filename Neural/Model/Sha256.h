// SHA-256 (FIPS 180-4), small enough to own: the runtime links no cryptography.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "Neural/Model/Sha256Blocks.h"

namespace quillmere::neural {

/// A running digest. Not a defence against timing, only a check that bytes are what they were.
class Sha256 {
public:
    void update(std::span<const std::byte> bytes);
    /// The digest so far as 64 lower-case hexadecimal digits; ends the use of the object.
    std::string finish();

    static std::string of(std::span<const std::byte> bytes);

private:
    Sha256State state_{0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                       0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
    std::array<std::byte, 64> pending_{};
    std::size_t pendingSize_ = 0;
    std::uint64_t total_ = 0;
};

}  // namespace quillmere::neural
