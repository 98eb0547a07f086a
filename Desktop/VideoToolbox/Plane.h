// One channel of a frame: borrowed from its owner, or owned with a border to look beyond the edge.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "Base/Geometry.h"

namespace quillmere::scaler {

/// Borrowed rows, from the top down; `stride` counts elements. Whoever made the view keeps the
/// pixels alive.
template <class T>
struct PlaneView {
    T* pixels = nullptr;
    std::ptrdiff_t stride = 0;
    PixelSize size;

    T* row(int y) const { return pixels + y * stride; }
};

using SourcePlane = PlaneView<const std::uint8_t>;
using TargetPlane = PlaneView<std::uint8_t>;

/// Owned pixels with a border on all sides, so that neither a filter nor a motion vector has to
/// look where the edge is. What lies `border` or less beyond an edge may be read, and up to a
/// vector beyond the end of a row written; `extendEdges` makes the border repeat the edge.
template <class T>
class PaddedPlane {
public:
    PaddedPlane() = default;
    PaddedPlane(PixelSize size, int border)
        : size_(size),
          border_(border),
          stride_((size.width + 2 * border + 2 * kSlack) / kSlack * kSlack),
          pixels_(static_cast<std::size_t>(stride_) * (size.height + 2 * border) + 2 * kSlack) {}

    PixelSize size() const { return size_; }
    std::ptrdiff_t stride() const { return stride_; }
    T* row(int y) { return pixels_.data() + offset(y); }
    const T* row(int y) const { return pixels_.data() + offset(y); }

    void extendEdges() { extendEdges(0, size_.height); }
    /// The part that belongs to the rows [first, end): of parts, several threads may do one each.
    void extendEdges(int first, int end) {
        for (int y = first; y < end; ++y) {
            T* pixels = row(y);
            std::fill(pixels - border_, pixels, pixels[0]);
            std::fill(pixels + size_.width, pixels + size_.width + border_,
                      pixels[size_.width - 1]);
        }
        const auto copyRow = [&](int from, int to) {
            std::copy_n(row(from) - border_, size_.width + 2 * border_, row(to) - border_);
        };
        for (int n = 1; n <= border_; ++n) {
            if (first == 0) copyRow(0, -n);
            if (end == size_.height) copyRow(size_.height - 1, size_.height - 1 + n);
        }
    }

private:
    static constexpr std::ptrdiff_t kSlack = 64;

    std::ptrdiff_t offset(int y) const { return (y + border_) * stride_ + border_; }

    PixelSize size_;
    int border_ = 0;
    std::ptrdiff_t stride_ = 0;
    std::vector<T> pixels_;
};

}  // namespace quillmere::scaler
