#include "Neural/Model/Sha256.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace quillmere::neural {
namespace {

constexpr std::size_t kBlock = 64;

std::uint32_t bigEndian(const std::byte* at) {
    return std::to_integer<std::uint32_t>(at[0]) << 24 |
           std::to_integer<std::uint32_t>(at[1]) << 16 |
           std::to_integer<std::uint32_t>(at[2]) << 8 | std::to_integer<std::uint32_t>(at[3]);
}

void compressOne(Sha256State& state, const std::byte* block) {
    using std::rotr;
    std::array<std::uint32_t, 64> w;
    for (std::size_t t = 0; t < 16; ++t) w[t] = bigEndian(block + 4 * t);
    for (std::size_t t = 16; t < 64; ++t) {
        const std::uint32_t s0 = rotr(w[t - 15], 7) ^ rotr(w[t - 15], 18) ^ (w[t - 15] >> 3);
        const std::uint32_t s1 = rotr(w[t - 2], 17) ^ rotr(w[t - 2], 19) ^ (w[t - 2] >> 10);
        w[t] = w[t - 16] + s0 + w[t - 7] + s1;
    }
    auto [a, b, c, d, e, f, g, h] = state;
    for (std::size_t t = 0; t < 64; ++t) {
        const std::uint32_t sum1 = rotr(e, 6) ^ rotr(e, 11) ^ rotr(e, 25);
        const std::uint32_t first = h + sum1 + ((e & f) ^ (~e & g)) + kSha256Rounds[t] + w[t];
        const std::uint32_t sum0 = rotr(a, 2) ^ rotr(a, 13) ^ rotr(a, 22);
        const std::uint32_t second = sum0 + ((a & b) ^ (a & c) ^ (b & c));
        h = g;
        g = f;
        f = e;
        e = d + first;
        d = c;
        c = b;
        b = a;
        a = first + second;
    }
    const Sha256State step{a, b, c, d, e, f, g, h};
    for (std::size_t i = 0; i < 8; ++i) state[i] += step[i];
}

void compress(Sha256State& state, const std::byte* blocks, std::size_t count) {
    const Sha256Compress fast = compressByInstructions();
    (fast != nullptr ? fast : &compressPlainly)(state, blocks, count);
}

}  // namespace

const std::array<std::uint32_t, 64> kSha256Rounds{
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

void compressPlainly(Sha256State& state, const std::byte* blocks, std::size_t count) {
    for (; count > 0; --count, blocks += kBlock) compressOne(state, blocks);
}

void Sha256::update(std::span<const std::byte> bytes) {
    total_ += bytes.size();
    while (!bytes.empty()) {
        if (pendingSize_ == 0 && bytes.size() >= kBlock) {
            const std::size_t blocks = bytes.size() / kBlock;
            compress(state_, bytes.data(), blocks);
            bytes = bytes.subspan(blocks * kBlock);
            continue;
        }
        const std::size_t taken = std::min(kBlock - pendingSize_, bytes.size());
        std::memcpy(pending_.data() + pendingSize_, bytes.data(), taken);
        pendingSize_ += taken;
        bytes = bytes.subspan(taken);
        if (pendingSize_ == kBlock) {
            compress(state_, pending_.data(), 1);
            pendingSize_ = 0;
        }
    }
}

std::string Sha256::finish() {
    const std::uint64_t bits = total_ * 8;
    std::array<std::byte, 2 * kBlock> padding{std::byte{0x80}};
    const std::size_t used = (pendingSize_ < 56 ? 56 : 120) - pendingSize_;
    for (std::size_t i = 0; i < 8; ++i) {
        padding[used + i] = static_cast<std::byte>(bits >> (56 - 8 * i));
    }
    update(std::span(padding).first(used + 8));

    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (const std::uint32_t word : state_) {
        for (int shift = 28; shift >= 0; shift -= 4) text += kDigits[(word >> shift) & 15u];
    }
    return text;
}

std::string Sha256::of(std::span<const std::byte> bytes) {
    Sha256 digest;
    digest.update(bytes);
    return digest.finish();
}

}  // namespace quillmere::neural
