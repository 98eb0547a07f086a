// What each class of local structure is enlarged by.
#pragma once

#include <cstdint>
#include <vector>

#include "Desktop/VideoToolbox/LocalStructure.h"

namespace quillmere::scaler {

/// A pixel becomes four, each a weighted sum of the pixels around it: 5 rows of 7. The weights are
/// of the least squared error over photographs and drawings, a set for each class, as RAISR has it.
struct DoublingFilters {
    static constexpr int kColumns = 7;
    static constexpr int kRows = 5;
    static constexpr int kTaps = kColumns * kRows;
    static constexpr int kPhases = 4;    // upper left, upper right, lower left, lower right
    static constexpr int kOne = 1 << 6;  // a weight of 1

    /// [class][row][phase][8 columns], the last one zero: a vector of any length holds some phases
    /// of one row. Of a phase's left or right four columns, neither the weights above zero nor
    /// those below add up to more than 2, so that levels weighed by them stay within 16 bits.
    static constexpr int kPitch = 8;
    static constexpr int kClassWeights = kRows * kPhases * kPitch;

    std::vector<std::int8_t> weights;

    const std::int8_t* ofClass(int c) const { return weights.data() + c * kClassWeights; }

    /// From the table that `quillmere-scaler-training` writes.
    static const DoublingFilters& trained();
};

/// The weights as they are learned and stored. A mirrored picture has mirrored weights, so that
/// the directions 5 to 7 follow from 3 to 1, and the lower phases from the upper ones by half a
/// turn: [strength][coherence][direction 0 to 4][phase 0 to 1][row][column].
inline constexpr int kStoredDirections = 5;
inline constexpr int kStoredPhases = 2;
inline constexpr int kStoredFilters =
    LocalStructure::kStrengths * LocalStructure::kCoherences * kStoredDirections * kStoredPhases;
extern const std::int8_t kTrainedFilters[kStoredFilters][DoublingFilters::kTaps];

}  // namespace quillmere::scaler
