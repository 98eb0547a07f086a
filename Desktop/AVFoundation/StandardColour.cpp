#include "Desktop/AVFoundation/StandardColour.h"

#include <algorithm>
#include <cmath>

namespace quillmere {
namespace {

using Matrix = std::array<std::array<float, 3>, 3>;

constexpr double white = 203;  // candelas a square metre
constexpr double hlgPeak = 1000;
constexpr std::size_t linearSteps = 4096;
constexpr std::size_t steps = 4096;

double pqToLight(double value) {  // candelas a square metre
    constexpr double m1 = 2610.0 / 16384, m2 = 2523.0 / 4096 * 128;
    constexpr double c1 = 3424.0 / 4096, c2 = 2413.0 / 4096 * 32, c3 = 2392.0 / 4096 * 32;
    const double p = std::pow(value, 1 / m2);
    return 10000 * std::pow(std::max(p - c1, 0.0) / (c2 - c3 * p), 1 / m1);
}

double lightToPQ(double light) {
    constexpr double m1 = 2610.0 / 16384, m2 = 2523.0 / 4096 * 128;
    constexpr double c1 = 3424.0 / 4096, c2 = 2413.0 / 4096 * 32, c3 = 2392.0 / 4096 * 32;
    const double y = std::pow(std::clamp(light / 10000, 0.0, 1.0), m1);
    return std::pow((c1 + c2 * y) / (1 + c3 * y), m2);
}

double hlgToScene(double value) {  // 0 to 1
    constexpr double a = 0.17883277, b = 1 - 4 * a;
    const double c = 0.5 - a * std::log(4 * a);
    return value <= 0.5 ? value * value / 3 : (std::exp((value - c) / a) + b) / 12;
}

/// The tone curve of BT.2390 from a peak of `peak` to `white`, black at 0 in both.
double toneMapped(double light, double peak) {
    const double most = lightToPQ(peak);
    const double target = lightToPQ(white) / most;
    const double knee = 1.5 * target - 0.5;
    const double e = std::min(lightToPQ(light) / most, 1.0);
    if (e < knee) return light;
    const double t = (e - knee) / (1 - knee);
    const double t2 = t * t, t3 = t2 * t;
    const double mapped =
        (2 * t3 - 3 * t2 + 1) * knee + (t3 - 2 * t2 + t) * (1 - knee) + (-2 * t3 + 3 * t2) * target;
    return pqToLight(mapped * most);
}

struct Chromaticity {
    double x, y;
};
struct Primaries {
    AVColorPrimaries id;
    Chromaticity red, green, blue;
};

constexpr Chromaticity d65{0.3127, 0.3290};
// All with the white of D65.
constexpr Primaries known[] = {
    {AVCOL_PRI_BT709, {0.640, 0.330}, {0.300, 0.600}, {0.150, 0.060}},
    {AVCOL_PRI_BT470BG, {0.640, 0.330}, {0.290, 0.600}, {0.150, 0.060}},
    {AVCOL_PRI_SMPTE170M, {0.630, 0.340}, {0.310, 0.595}, {0.155, 0.070}},
    {AVCOL_PRI_SMPTE240M, {0.630, 0.340}, {0.310, 0.595}, {0.155, 0.070}},
    {AVCOL_PRI_BT2020, {0.708, 0.292}, {0.170, 0.797}, {0.131, 0.046}},
    {AVCOL_PRI_SMPTE432, {0.680, 0.320}, {0.265, 0.690}, {0.150, 0.060}},
};

using Matrix64 = std::array<std::array<double, 3>, 3>;

Matrix64 inverse(const Matrix64& m) {
    Matrix64 result{};
    double determinant = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            const std::size_t r1 = (j + 1) % 3, r2 = (j + 2) % 3;
            const std::size_t c1 = (i + 1) % 3, c2 = (i + 2) % 3;
            result[i][j] = m[r1][c1] * m[r2][c2] - m[r1][c2] * m[r2][c1];
        }
        determinant += m[0][i] * result[i][0];
    }
    for (auto& row : result) {
        for (double& value : row) value /= determinant;
    }
    return result;
}

/// Linear R, G, B to CIE X, Y, Z.
Matrix64 toXYZ(const Primaries& p) {
    Matrix64 columns{};
    const Chromaticity all[] = {p.red, p.green, p.blue};
    for (std::size_t i = 0; i < 3; ++i) {
        columns[0][i] = all[i].x / all[i].y;
        columns[1][i] = 1;
        columns[2][i] = (1 - all[i].x - all[i].y) / all[i].y;
    }
    const double whitePoint[] = {d65.x / d65.y, 1, (1 - d65.x - d65.y) / d65.y};
    const Matrix64 solved = inverse(columns);
    for (std::size_t i = 0; i < 3; ++i) {
        double scale = 0;
        for (std::size_t k = 0; k < 3; ++k) scale += solved[i][k] * whitePoint[k];
        for (std::size_t row = 0; row < 3; ++row) columns[row][i] *= scale;
    }
    return columns;
}

const Primaries* find(AVColorPrimaries id) {
    const auto* found = std::find_if(std::begin(known), std::end(known),
                                     [&](const Primaries& p) { return p.id == id; });
    return found == std::end(known) ? nullptr : found;
}

Matrix toBT709(const Primaries& from) {
    const Matrix64 a = inverse(toXYZ(known[0])), b = toXYZ(from);
    Matrix result{};
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            double sum = 0;
            for (std::size_t k = 0; k < 3; ++k) sum += a[i][k] * b[k][j];
            result[i][j] = static_cast<float>(sum);
        }
    }
    return result;
}

/// `at(x)` for x from 0 to 1, by the square root of x, which keeps dark values apart.
template <class Value, class Function>
std::vector<Value> table(const Function& at) {
    std::vector<Value> values(steps + 1);
    for (std::size_t i = 0; i <= steps; ++i) {
        const double root = static_cast<double>(i) / steps;
        values[i] = static_cast<Value>(at(root * root));
    }
    return values;
}

template <class Value>
Value lookUp(const std::vector<Value>& values, float x) {
    const float root = std::sqrt(std::clamp(x, 0.0f, 1.0f));
    return values[static_cast<std::size_t>(root * steps + 0.5f)];
}

bool isHighRange(AVColorTransferCharacteristic transfer) {
    return transfer == AVCOL_TRC_SMPTE2084 || transfer == AVCOL_TRC_ARIB_STD_B67;
}

}  // namespace

std::optional<StandardColour> StandardColour::of(const MovieColour& colour) {
    const bool isOther = colour.primaries != AVCOL_PRI_BT709 && find(colour.primaries) != nullptr;
    if (!isHighRange(colour.transfer) && !isOther) return {};
    return StandardColour(colour);
}

StandardColour::StandardColour(const MovieColour& colour)
    : isHLG_(colour.transfer == AVCOL_TRC_ARIB_STD_B67), linear_(linearSteps) {
    const bool isPQ = colour.transfer == AVCOL_TRC_SMPTE2084;
    const double peak = isHLG_ ? hlgPeak : isPQ ? std::clamp(colour.peak, white, 10000.0) : white;
    for (std::size_t i = 0; i < linearSteps; ++i) {
        const double value = static_cast<double>(i) / (linearSteps - 1);
        const double light = isHLG_ ? hlgToScene(value)
                             : isPQ ? std::min(pqToLight(value), peak) / white
                                    : std::pow(value, 2.4);
        linear_[i] = static_cast<float>(light);
    }
    brightest_ = static_cast<float>(peak / white);
    if (isHLG_) {
        systemGamma_ = table<float>([](double y) { return hlgPeak / white * std::pow(y, 0.2); });
    }
    if (isHLG_ || isPQ) {
        toneScale_ = table<float>([&](double x) {
            const double light = std::max(x, 1e-9) * peak;
            return toneMapped(light, peak) / light;
        });
    }
    coded_ =
        table<std::uint8_t>([](double x) { return std::floor(255 * std::pow(x, 1 / 2.4) + 0.5); });
    const Primaries* from = find(colour.primaries);
    // High range that doesn't name its primaries has those of BT.2100.
    if (!from) from = find(isHLG_ || isPQ ? AVCOL_PRI_BT2020 : AVCOL_PRI_BT709);
    primaries_ = toBT709(*from);
}

void StandardColour::mapRow(const std::uint16_t* rgb, std::uint8_t* bgra,
                            std::size_t pixels) const {
    for (std::size_t i = 0; i < pixels; ++i, rgb += 3, bgra += 4) {
        float r = linear_[rgb[0] >> 4], g = linear_[rgb[1] >> 4], b = linear_[rgb[2] >> 4];
        if (isHLG_) {
            const float gain = lookUp(systemGamma_, 0.2627f * r + 0.6780f * g + 0.0593f * b);
            r *= gain;
            g *= gain;
            b *= gain;
        }
        if (!toneScale_.empty()) {
            const float scale = lookUp(toneScale_, std::max({r, g, b}) / brightest_);
            r *= scale;
            g *= scale;
            b *= scale;
        }
        for (std::size_t c = 0; c < 3; ++c) {
            const auto& row = primaries_[c];
            bgra[2 - c] = lookUp(coded_, row[0] * r + row[1] * g + row[2] * b);
        }
        bgra[3] = 255;
    }
}

}  // namespace quillmere
