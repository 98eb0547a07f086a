// The one formula by which pictures are laid over each other.
#pragma once

#include <cstddef>
#include <cstdint>

namespace quillmere {

/// Lays `count` premultiplied RGBA pixels over those at `destination`: a channel becomes
/// source + destination * (255 - source alpha) / 255, rounded to nearest, at most 255.
/// The two rows do not overlap. Rows without transparency cost a copy.
void sourceOver(std::uint8_t* destination, const std::uint8_t* source, std::size_t count);

}  // namespace quillmere
