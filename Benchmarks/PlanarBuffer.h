// A frame with memory of its own.
#pragma once

#include <vector>

#include "Desktop/VideoToolbox/FrameScaler.h"

namespace quillmere::benchmark {

/// Colour starts as grey.
class PlanarBuffer {
public:
    explicit PlanarBuffer(PixelSize size)
        : size_(size),
          colourSize_{(size.width + 1) / 2, (size.height + 1) / 2},
          luma_(area(size)),
          blue_(area(colourSize_), 128),
          red_(blue_) {}

    scaler::TargetFrame target() {
        return {view(luma_.data(), size_), view(blue_.data(), colourSize_),
                view(red_.data(), colourSize_)};
    }
    scaler::SourceFrame source() const {
        return {view(luma_.data(), size_), view(blue_.data(), colourSize_),
                view(red_.data(), colourSize_)};
    }

private:
    static std::size_t area(PixelSize size) {
        return static_cast<std::size_t>(size.width) * size.height;
    }
    template <class T>
    static scaler::PlaneView<T> view(T* pixels, PixelSize size) {
        return {pixels, size.width, size};
    }

    PixelSize size_;
    PixelSize colourSize_;
    std::vector<std::uint8_t> luma_;
    std::vector<std::uint8_t> blue_;
    std::vector<std::uint8_t> red_;
};

}  // namespace quillmere::benchmark
