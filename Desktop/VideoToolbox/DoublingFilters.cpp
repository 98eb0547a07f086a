#include "Desktop/VideoToolbox/DoublingFilters.h"

namespace quillmere::scaler {
namespace {

// Writes one stored filter to one class and phase, mirrored as asked.
void place(const std::int8_t* stored, bool mirrorX, bool mirrorY, int phase,
           std::int8_t* classWeights) {
    using F = DoublingFilters;
    for (int row = 0; row < F::kRows; ++row) {
        for (int column = 0; column < F::kColumns; ++column) {
            const int fromRow = mirrorY ? F::kRows - 1 - row : row;
            const int fromColumn = mirrorX ? F::kColumns - 1 - column : column;
            classWeights[(row * F::kPhases + phase) * F::kPitch + column] =
                stored[fromRow * F::kColumns + fromColumn];
        }
    }
}

DoublingFilters expanded() {
    DoublingFilters filters;
    filters.weights.resize(LocalStructure::kClasses * DoublingFilters::kClassWeights);
    constexpr int kinds = LocalStructure::kStrengths * LocalStructure::kCoherences;
    for (int kind = 0; kind < kinds; ++kind) {
        for (int direction = 0; direction < LocalStructure::kDirections; ++direction) {
            const bool mirrored = direction >= kStoredDirections;
            const int from = mirrored ? LocalStructure::kDirections - direction : direction;
            std::int8_t* to =
                filters.weights.data() +
                (kind * LocalStructure::kDirections + direction) * DoublingFilters::kClassWeights;
            for (int phase = 0; phase < kStoredPhases; ++phase) {
                const std::int8_t* stored =
                    kTrainedFilters[(kind * kStoredDirections + from) * kStoredPhases + phase];
                const int upper = mirrored ? 1 - phase : phase;
                place(stored, mirrored, false, upper, to);
                place(stored, !mirrored, true, 3 - upper, to);
            }
        }
    }
    return filters;
}

}  // namespace

const DoublingFilters& DoublingFilters::trained() {
    static const DoublingFilters filters = expanded();
    return filters;
}

}  // namespace quillmere::scaler
