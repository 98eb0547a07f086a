// The part of SHA-256 that takes the time, by plain arithmetic and by the processor's own means.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace quillmere::neural {

/// Eight words of state and `count` blocks of 64 bytes that go into it.
using Sha256State = std::array<std::uint32_t, 8>;
using Sha256Compress = void (*)(Sha256State& state, const std::byte* blocks, std::size_t count);

/// The first 32 bits of the fractional parts of the cube roots of the first 64 primes.
extern const std::array<std::uint32_t, 64> kSha256Rounds;

void compressPlainly(Sha256State& state, const std::byte* blocks, std::size_t count);

/// By Intel's SHA extensions, several times as fast; null where the processor doesn't have them.
Sha256Compress compressByInstructions();

}  // namespace quillmere::neural
