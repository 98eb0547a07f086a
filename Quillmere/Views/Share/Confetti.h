// The rain of paper that falls once over a share screen.
#pragma once

#include <vector>

#include "Base/Geometry.h"
#include "Base/UniformRandom.h"

namespace quillmere {

struct Confetti {
    enum class Color { red, blue, green, yellow, orange, purple };

    static constexpr std::size_t count = 100;
    static constexpr double fallSeconds = 1.5;     // linear
    static constexpr double fallsBeneathBy = 100;  // points under the screen, where it ends

    std::size_t id;
    Color color;
    Point position;   // where the fall begins, in points
    double rotation;  // degrees, 0 up to 360
    double scale;     // 0.5 up to 1.5
};

inline std::vector<Confetti> makeConfetti(double screenWidth, const RandomSource& random) {
    constexpr std::uint64_t colors = 6;
    constexpr double startHeight = 100, fullTurn = 360, smallest = 0.5;
    std::vector<Confetti> pieces;
    for (std::size_t id = 0; id < Confetti::count; ++id) {
        const auto color = static_cast<Confetti::Color>(uniformBelow(colors, random));
        const double x = uniformUpTo(screenWidth, random);
        const double y = uniformUpTo(startHeight, random);
        const double rotation = uniformUpTo(fullTurn, random);
        pieces.push_back({id, color, {x, y}, rotation, smallest + uniformUpTo(1, random)});
    }
    return pieces;
}

}  // namespace quillmere
