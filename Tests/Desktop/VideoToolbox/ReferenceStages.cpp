#include "Tests/Desktop/VideoToolbox/ReferenceStages.h"

#include <cmath>
#include <cstdlib>
#include <numbers>

#include "Desktop/VideoToolbox/LanczosTaps.h"

namespace quillmere::scaler::reference {
namespace {

int tent(int distance) { return 2 - std::abs(distance); }

int sumOfFour(const Pixels& plane, int x, int y) {
    return plane(2 * x, 2 * y) + plane(2 * x + 1, 2 * y) + plane(2 * x, 2 * y + 1) +
           plane(2 * x + 1, 2 * y + 1);
}

}  // namespace

int smoothed(const Pixels& luma, int x, int y) {
    int sum = 0;
    for (int dy = -1; dy <= 1; ++dy) {
        for (int dx = -1; dx <= 1; ++dx) sum += tent(dx) * tent(dy) * luma(x + dx, y + dy);
    }
    return (sum + 8) / 16;
}

int halved(const Pixels& plane, int x, int y) { return (sumOfFour(plane, x, y) + 2) / 4; }

int classOf(const Pixels& luma, int x, int y) {
    double xx = 0, xy = 0, yy = 0;
    x = x / 2 * 2;
    y = y / 2 * 2;
    for (int dy = -1; dy <= 2; ++dy) {
        for (int dx = -1; dx <= 2; ++dx) {
            const int gx = luma(x + dx + 1, y + dy) - luma(x + dx - 1, y + dy);
            const int gy = luma(x + dx, y + dy + 1) - luma(x + dx, y + dy - 1);
            xx += gx * gx / 16.0;
            xy += gx * gy / 16.0;
            yy += gy * gy / 16.0;
        }
    }
    const double trace = xx + yy, length = std::hypot(xx - yy, 2 * xy);
    const int strength = trace < 60 ? 0 : trace < 300 ? 1 : trace < 1500 ? 2 : 3;
    const int coherence = length < 0.3 * trace ? 0 : length < 0.7 * trace ? 1 : 2;
    const double eighths = std::atan2(2 * xy, xx - yy) / (std::numbers::pi / 4);
    return LocalStructure::classOf(strength, coherence,
                                   (static_cast<int>(std::lround(eighths)) + 8) % 8);
}

int doubledPixel(const Pixels& luma, int classOfSource, int x, int y) {
    const std::int8_t* weights = DoublingFilters::trained().ofClass(classOfSource);
    const int phase = y % 2 * 2 + x % 2;
    int sum = 0;
    for (int row = 0; row < DoublingFilters::kRows; ++row) {
        for (int column = 0; column < DoublingFilters::kColumns; ++column) {
            sum += weights[(row * DoublingFilters::kPhases + phase) * DoublingFilters::kPitch +
                           column] *
                   luma(x / 2 + column - 3, y / 2 + row - 2);
        }
    }
    return std::clamp((sum + DoublingFilters::kOne / 2) >> 6, 0, 255);
}

int windowDifference(const Pixels& a, const Pixels& b, Step step, int x, int y) {
    int sum = 0;
    for (int dy = 0; dy < 8; ++dy) {
        for (int dx = 0; dx < 8; ++dx) {
            sum += std::abs(a(x + dx, y + dy) - b(x + dx + step.x, y + dy + step.y));
        }
    }
    return sum;
}

SlopeSums slopeSums(const Pixels& frame, const Pixels& before, int x0, int y0, Step shift) {
    SlopeSums sums;
    for (int y = y0; y < y0 + 16; ++y) {
        for (int x = x0; x < x0 + 16; ++x) {
            int shifted = 0;
            for (int corner = 0; corner < 4; ++corner) {
                const int dx = corner % 2, dy = corner / 2;
                const int right = shift.x & 7, below = shift.y & 7;
                shifted += (dx == 1 ? right : 8 - right) * (dy == 1 ? below : 8 - below) *
                           before(x + (shift.x >> 3) + dx, y + (shift.y >> 3) + dy);
            }
            const int gx = frame(x + 1, y) - frame(x - 1, y);
            const int gy = frame(x, y + 1) - frame(x, y - 1);
            const int d = (64 * frame(x, y) - shifted) >> 2;
            sums.xx += gx * gx;
            sums.xy += gx * gy;
            sums.yy += gy * gy;
            sums.xd += gx * d;
            sums.yd += gy * d;
        }
    }
    return sums;
}

int lanczosPixel(const Pixels& plane, int eighthsX, int eighthsY) {
    const auto weighed = [](int eighths, const auto& pixelAt) {
        int sum = 32;
        for (int tap = 0; tap < kLanczosTaps; ++tap) {
            sum += kLanczos[eighths & 7][tap] * pixelAt((eighths >> 3) + tap - 2);
        }
        return std::clamp(sum >> 6, 0, 255);
    };
    return weighed(eighthsY,
                   [&](int y) { return weighed(eighthsX, [&](int x) { return plane(x, y); }); });
}

double share(const Pixels& mismatch, int x, int y, float noise) {
    double sum = 0, size = 0;
    for (int dy = -2; dy <= 2; ++dy) {
        for (int dx = -2; dx <= 2; ++dx) {
            sum += mismatch(x + dx, y + dy) / 100.0;
            size += std::abs(mismatch(x + dx, y + dy)) / 100.0;
        }
    }
    const double worse = std::max(size, 3 * std::abs(sum));
    const double believed = 1 + noise, refused = 6 + 1.6 * noise;
    return kFullShare * std::clamp((refused - worse) / (refused - believed), 0.0, 1.0);
}

double residual(const Pixels& luma, const Pixels& enlarged, int x, int y, float noise) {
    const double missing = 4 * luma(x, y) - sumOfFour(enlarged, x, y);
    if (noise < 0.25f) return 0.8 * missing;
    return 0.8 * missing * std::clamp(std::abs(missing) / (4 * 2 * noise) - 1, 0.15, 1.0);
}

int corrected(const Pixels& residual, int level, int x, int y) {
    const int besideX = x / 2 + (x % 2 == 0 ? -1 : 1), besideY = y / 2 + (y % 2 == 0 ? -1 : 1);
    const int sum = 9 * residual(x / 2, y / 2) + 3 * residual(besideX, y / 2) +
                    3 * residual(x / 2, besideY) + residual(besideX, besideY);
    return std::clamp(level + ((sum + 32) >> 6), 0, 255);
}

}  // namespace quillmere::scaler::reference
