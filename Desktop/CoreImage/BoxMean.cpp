#include "Desktop/CoreImage/BoxMean.h"

#include <cstring>

namespace quillmere {
namespace {

std::uint32_t load(const std::uint8_t* pixel) {
    std::uint32_t value;
    std::memcpy(&value, pixel, sizeof value);
    return value;
}

// The hot case. Two bytes of a pixel share a 32-bit sum, 16 bits each: four bytes add up to 1020.
void halfRow(std::uint8_t* result, std::size_t count, const std::uint8_t* upper,
             const std::uint8_t* lower) {
    constexpr std::uint32_t everyOther = 0x00ff00ff;
    constexpr std::uint32_t half = 0x00020002;
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint32_t a = load(upper + 8 * i);
        const std::uint32_t b = load(upper + 8 * i + 4);
        const std::uint32_t c = load(lower + 8 * i);
        const std::uint32_t d = load(lower + 8 * i + 4);
        const std::uint32_t even =
            (a & everyOther) + (b & everyOther) + (c & everyOther) + (d & everyOther) + half;
        const std::uint32_t odd = ((a >> 8) & everyOther) + ((b >> 8) & everyOther) +
                                  ((c >> 8) & everyOther) + ((d >> 8) & everyOther) + half;
        const std::uint32_t mean = ((even >> 2) & everyOther) | (((odd >> 2) & everyOther) << 8);
        std::memcpy(result + 4 * i, &mean, sizeof mean);
    }
}

}  // namespace

void boxMeanRow(std::uint8_t* result, std::size_t count, const std::uint8_t* rows,
                std::size_t bytesPerRow, std::size_t n) {
    const std::uint64_t area = std::uint64_t{n} * n;
    if (n == 2) return halfRow(result, count, rows, rows + bytesPerRow);
    for (std::size_t i = 0; i < count; ++i) {
        std::uint64_t sums[4] = {};
        for (std::size_t y = 0; y < n; ++y) {
            const std::uint8_t* pixel = rows + y * bytesPerRow + 4 * n * i;
            for (std::size_t x = 0; x < n; ++x, pixel += 4) {
                for (std::size_t c = 0; c < 4; ++c) sums[c] += pixel[c];
            }
        }
        for (std::size_t c = 0; c < 4; ++c) {
            result[4 * i + c] = static_cast<std::uint8_t>((2 * sums[c] + area) / (2 * area));
        }
    }
}

}  // namespace quillmere
