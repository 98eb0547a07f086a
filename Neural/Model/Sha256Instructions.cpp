#include "Neural/Model/Sha256Blocks.h"

#if defined(__x86_64__)
#include <cpuid.h>
#include <immintrin.h>
#endif

namespace quillmere::neural {

#if defined(__x86_64__)
namespace {

__m128i* vectors(std::uint32_t* words) { return reinterpret_cast<__m128i*>(words); }

// The instructions want the state as (a, b, e, f) and (c, d, g, h), the first word highest.
__attribute__((target("sha,sse4.1"))) void compress(Sha256State& state, const std::byte* blocks,
                                                    std::size_t count) {
    const __m128i bigEndian = _mm_set_epi64x(0x0c0d0e0f08090a0b, 0x0405060700010203);
    const auto [a, b, c, d, e, f, g, h] = state;
    __m128i abef = _mm_set_epi32(static_cast<int>(a), static_cast<int>(b), static_cast<int>(e),
                                 static_cast<int>(f));
    __m128i cdgh = _mm_set_epi32(static_cast<int>(c), static_cast<int>(d), static_cast<int>(g),
                                 static_cast<int>(h));
    for (; count > 0; --count, blocks += 64) {
        const __m128i abefBefore = abef;
        const __m128i cdghBefore = cdgh;
        __m128i words[4];  // of the last four groups of four rounds
#pragma GCC unroll 16
        for (int group = 0; group < 16; ++group) {
            __m128i& word = words[group % 4];
            if (group < 4) {
                const auto* from = reinterpret_cast<const __m128i*>(blocks) + group;
                word = _mm_shuffle_epi8(_mm_loadu_si128(from), bigEndian);
            } else {
                const __m128i last = words[(group + 3) % 4];
                const __m128i seventh = _mm_alignr_epi8(last, words[(group + 2) % 4], 4);
                word = _mm_sha256msg1_epu32(word, words[(group + 1) % 4]);
                word = _mm_sha256msg2_epu32(_mm_add_epi32(word, seventh), last);
            }
            const auto* constants = reinterpret_cast<const __m128i*>(kSha256Rounds.data()) + group;
            const __m128i sum = _mm_add_epi32(word, _mm_loadu_si128(constants));
            cdgh = _mm_sha256rnds2_epu32(cdgh, abef, sum);
            abef = _mm_sha256rnds2_epu32(abef, cdgh, _mm_shuffle_epi32(sum, 0x0e));
        }
        abef = _mm_add_epi32(abef, abefBefore);
        cdgh = _mm_add_epi32(cdgh, cdghBefore);
    }
    std::array<std::uint32_t, 4> first{};
    std::array<std::uint32_t, 4> second{};
    _mm_storeu_si128(vectors(first.data()), abef);
    _mm_storeu_si128(vectors(second.data()), cdgh);
    state = {first[3], first[2], second[3], second[2], first[1], first[0], second[1], second[0]};
}

bool hasInstructions() {
    unsigned a = 0;
    unsigned b = 0;
    unsigned c = 0;
    unsigned d = 0;
    constexpr unsigned kSha = 1u << 29;
    return __builtin_cpu_supports("sse4.1") && __get_cpuid_count(7, 0, &a, &b, &c, &d) != 0 &&
           (b & kSha) != 0;
}

}  // namespace

Sha256Compress compressByInstructions() {
    static const bool available = hasInstructions();
    return available ? &compress : nullptr;
}
#else
Sha256Compress compressByInstructions() { return nullptr; }
#endif

}  // namespace quillmere::neural
