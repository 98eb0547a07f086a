// By how much the system's scaler enlarges a video.
#pragma once

#include <optional>

#include "Platform/Application/Console.h"
#include "Platform/VideoToolbox/VideoToolbox.h"

namespace quillmere {

/// The output's limit where the platform tells none.
inline constexpr PixelSize assumedMaximumDimensions{4096, 4096};

/// The largest supported factor for which the enlarged video stays within the scaler's limit, and
/// which the scaler takes for a source of that size; nothing where there is none. Fractions of a
/// pixel count as whole ones. A size that is no finite number is a broken invariant. Any thread.
std::optional<int> resolveSuperResolutionFactor(const VideoToolbox& videoToolbox, Console& console,
                                                double width, double height);

}  // namespace quillmere
