// Frames are worked through in bands of rows, one thread a band.
#pragma once

#include <algorithm>

#include "Base/WorkerPool.h"

namespace quillmere::scaler {

/// The rows [first, end) of a plane.
struct RowBand {
    int first = 0;
    int end = 0;
};

/// A band's rows: also the side of a motion block, so that a band is a row of blocks.
inline constexpr int kBandRows = 16;

inline int bandsOf(int rows) { return (rows + kBandRows - 1) / kBandRows; }

/// body(band, worker) for every band of `rows` rows; `worker` as `WorkerPool` tells it.
template <class Body>
void forBands(int rows, WorkerPool& pool, const Body& body, int bandRows = kBandRows) {
    pool.parallelFor(static_cast<std::size_t>((rows + bandRows - 1) / bandRows),
                     [&](std::size_t n, std::size_t worker) {
                         const int first = static_cast<int>(n) * bandRows;
                         body(RowBand{first, std::min(first + bandRows, rows)}, worker);
                     });
}

}  // namespace quillmere::scaler
