// Reducing by a whole number, one row of the result at a time.
#pragma once

#include <cstddef>
#include <cstdint>

namespace quillmere {

/// Each of the `count` RGBA pixels of `result` becomes the mean of an n by n block, rounded,
/// halves up. `rows` points at n rows of n * count pixels, `bytesPerRow` apart.
void boxMeanRow(std::uint8_t* result, std::size_t count, const std::uint8_t* rows,
                std::size_t bytesPerRow, std::size_t n);

}  // namespace quillmere
