// What a pixel lies in (a flat, an edge of some direction, a tangle), so that each is enlarged in
// its own way.
#pragma once

#include <cstdint>
#include <vector>

#include "Desktop/VideoToolbox/Plane.h"
#include "Desktop/VideoToolbox/RowBands.h"

namespace quillmere::scaler {

/// Classes of the structure tensor of 2 by 2 pixels: the mean squares and products of central
/// differences over the 4 by 4 pixels around their middle. Its trace tells the strength, the
/// eigenvalues' difference over their sum the coherence, and the doubled angle of its main axis the
/// direction, in eighths of a half turn (Romano, Isidoro and Milanfar, "RAISR: Rapid and accurate
/// image super resolution", 2016). The bounds split what photographs hold into classes of useful
/// size.
struct LocalStructure {
    static constexpr int kStrengths = 4;   // traces below 60, 300, 1500, and above
    static constexpr int kCoherences = 3;  // below 0.3, 0.7, and above
    static constexpr int kDirections = 8;  // 0: brightness changes along x; 2: along x and y alike
    static constexpr int kClasses = kStrengths * kCoherences * kDirections;

    static constexpr int classOf(int strength, int coherence, int direction) {
        return (strength * kCoherences + coherence) * kDirections + direction;
    }
};

/// Finds the classes of rows. Keeps its scratch memory: one for each thread.
class StructureClassifier {
public:
    explicit StructureClassifier(int width);

    /// The classes of rows `y`, an even one, and `y + 1`: one for each 2 by 2 pixels, the last of
    /// which may reach over the edge. They stay until the next call. The plane's border is extended
    /// by 3 or more.
    const std::uint8_t* classify(const PaddedPlane<std::uint8_t>& luma, int y);

private:
    int blocks_;
    int pitch_;
    std::vector<std::int32_t> sums_;
    std::vector<std::uint8_t> classes_;
};

}  // namespace quillmere::scaler
