// The colours of a movie in those that a screen shows: BT.709 primaries, standard range.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

extern "C" {
#include <libavutil/pixfmt.h>
}

namespace quillmere {

/// How a movie's R'G'B' values are meant.
struct MovieColour {
    AVColorTransferCharacteristic transfer = AVCOL_TRC_UNSPECIFIED;
    AVColorPrimaries primaries = AVCOL_PRI_UNSPECIFIED;
    double peak = 1000;  // of the brightest part of a PQ movie, in candelas a square metre

    friend bool operator==(const MovieColour&, const MovieColour&) = default;
};

/// Maps R'G'B' to R'G'B': linear light, a tone map where the range is high, the primaries, and the
/// curve of a standard screen.
///
/// Sources: ITU-R BT.2100-2 (PQ, HLG with its system gamma of 1.2), BT.2408 (white of a diffuse
/// surface at 203 candelas), BT.2390-10 section 5.4 (tone curve, here on the largest of the three
/// parts, so that the hue stays), BT.1886 (gamma 2.4), H.273 (primaries). What lies outside
/// BT.709's colours after that is cut.
///
/// Immutable; any thread.
class StandardColour {
public:
    /// Nothing for colours that are standard already, or that don't say what they are.
    static std::optional<StandardColour> of(const MovieColour& colour);

    /// `rgb` has three values of 16 bits a pixel, `bgra` four of 8, opaque.
    void mapRow(const std::uint16_t* rgb, std::uint8_t* bgra, std::size_t pixels) const;

private:
    explicit StandardColour(const MovieColour& colour);

    using Matrix = std::array<std::array<float, 3>, 3>;

    bool isHLG_;
    std::vector<float> linear_;        // by the upper 12 bits; 1 is a standard screen's white
    std::vector<float> systemGamma_;   // by the square root of scene luminance
    std::vector<float> toneScale_;     // by the square root of the largest part
    std::vector<std::uint8_t> coded_;  // by the square root of linear light
    float brightest_;                  // the largest value of `linear_`, for `toneScale_`
    Matrix primaries_;
};

}  // namespace quillmere
