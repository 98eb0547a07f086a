// A moment or a length of a movie, exact where seconds as floating point would drift.
#pragma once

#include <compare>
#include <cstdint>
#include <limits>

namespace quillmere {

/// `value` / `timescale` seconds. A timescale of 0 or less stands for a time that is not known.
struct MediaTime {
    std::int64_t value = 0;
    std::int32_t timescale = 0;

    static constexpr MediaTime zero() { return {0, 1}; }

    constexpr bool isKnown() const { return timescale > 0; }

    /// Not a number for a time that is not known.
    constexpr double seconds() const {
        return isKnown() ? static_cast<double>(value) / timescale
                         : std::numeric_limits<double>::quiet_NaN();
    }

    /// Compares the moments, not the way in which they are written: 1/2 equals 2/4. Two unknown
    /// times are equal; a known and an unknown one are unordered.
    friend constexpr std::partial_ordering operator<=>(const MediaTime& a, const MediaTime& b) {
        if (!a.isKnown() || !b.isKnown()) {
            return a.isKnown() == b.isKnown() ? std::partial_ordering::equivalent
                                              : std::partial_ordering::unordered;
        }
        // Whole seconds first, so that no product leaves 64 bits.
        const auto whole = a.wholeSeconds() <=> b.wholeSeconds();
        if (whole != 0) return whole;
        return a.rest() * b.timescale <=> b.rest() * a.timescale;
    }
    friend constexpr bool operator==(const MediaTime& a, const MediaTime& b) {
        return (a <=> b) == 0;
    }

private:
    constexpr std::int64_t wholeSeconds() const {
        return value / timescale - (value % timescale < 0 ? 1 : 0);
    }
    /// Zero or above, below `timescale`.
    constexpr std::int64_t rest() const {
        return value % timescale + (value % timescale < 0 ? timescale : 0);
    }
};

}  // namespace quillmere
