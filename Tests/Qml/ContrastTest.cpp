// Texts that can't be told from their ground, by the formula of WCAG 2.1 (relative luminance and
// contrast ratio), in both appearances.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <string>

namespace quillmere {
namespace {

constexpr double leastForText = 4.5;
constexpr double leastForShapes = 3;  // what shows the focus, and where something is

using Colours = std::map<std::string, std::string>;  // "#rrggbb" by name

Colours themeColours(bool dark) {
    std::ifstream file(QUILLMERE_SOURCE_DIR "/Desktop/Qml/Common/Theme.qml");
    const std::string qml{std::istreambuf_iterator<char>(file), {}};
    const std::regex colour("property color (\\w+): (?:dark \\? \"(#\\w{6})\" : )?\"(#\\w{6})\"");
    Colours colours;
    for (std::sregex_iterator at(qml.begin(), qml.end(), colour), end; at != end; ++at) {
        colours[(*at)[1]] = dark && (*at)[2].matched ? (*at)[2] : (*at)[3];
    }
    return colours;
}

double luminance(const std::string& colour) {
    const auto channel = [&](std::size_t at) {
        const double value = std::stoi(colour.substr(at, 2), nullptr, 16) / 255.0;
        return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * channel(1) + 0.7152 * channel(3) + 0.0722 * channel(5);
}

double contrast(const std::string& a, const std::string& b) {
    const double one = luminance(a);
    const double other = luminance(b);
    return (std::max(one, other) + 0.05) / (std::min(one, other) + 0.05);
}

TEST(Contrast, EveryTextCanBeReadOnItsGround) {
    EXPECT_NEAR(contrast("#000000", "#ffffff"), 21, 1e-9);
    EXPECT_NEAR(contrast("#777777", "#ffffff"), 4.48, 0.005);
    struct Case {
        const char* foreground;
        const char* ground;
        double least;
    };
    const Case cases[] = {
        {"text", "background", leastForText},
        {"text", "surface", leastForText},
        {"text", "raised", leastForText},
        {"text", "fill", leastForText},
        {"text", "fillHovered", leastForText},
        {"secondaryText", "background", leastForText},
        {"secondaryText", "surface", leastForText},
        {"secondaryText", "fill", leastForText},
        {"secondaryText", "fillHovered", leastForText},
        {"secondaryText", "picture", leastForText},
        {"accentText", "accent", leastForText},
        {"accentText", "accentHovered", leastForText},
        {"accent", "background", leastForShapes},
        {"accent", "surface", leastForShapes},
        {"good", "surface", leastForShapes},
    };
    for (const bool dark : {false, true}) {
        const Colours colours = themeColours(dark);
        for (const auto& [foreground, ground, least] : cases) {
            EXPECT_GE(contrast(colours.at(foreground), colours.at(ground)), least)
                << foreground << " on " << ground << (dark ? ", dark" : ", light");
        }
    }
}

}  // namespace
}  // namespace quillmere
