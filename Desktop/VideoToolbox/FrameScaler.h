// Enlarges the frames of a movie, each with the help of the ones before it.
#pragma once

#include <memory>

#include "Base/WorkerPool.h"
#include "Desktop/VideoToolbox/Plane.h"

namespace quillmere::scaler {

/// A frame of planar YUV 4:2:0, 8 bits a sample: the colour planes have half the size, rounded up,
/// and lie as H.264 has them (in line with the left of two brightness samples).
template <class T>
struct PlanarFrame {
    PlaneView<T> luma;
    PlaneView<T> blue;
    PlaneView<T> red;
};

using SourceFrame = PlanarFrame<const std::uint8_t>;
using TargetFrame = PlanarFrame<std::uint8_t>;

/// Recursive super-resolution. Of a frame's brightness,
///  1. each pixel is enlarged by filters of its local structure (ClassedDoubling.h);
///  2. the motion since the last frame is found for each block to a sixteenth of a pixel
///     (BlockSearch.h, SubpixelMotion.h), and what the last frame became is carried along it
///     (MotionCompensation.h), so that detail which no single frame has adds up;
///  3. what was carried is believed where it agrees with the frame (Trust.h), which leaves out
///     occlusions, cuts and changes of light, and averages noise elsewhere (NoiseLevel.h);
///  4. the mixture is made to agree with the source (BackProjection.h).
/// The recursion is that of Elad and Feuer ("Superresolution restoration of an image sequence:
/// adaptive filtering approach", 1999), with a filter bank in place of their plain interpolation.
///
/// All that happens at twice the size. For a factor of 4 the result is doubled once more by a fixed
/// filter (LanczosDoubling.h), which photographs, reduced by 4 and enlarged again, lose nothing by:
/// that far, there is no detail to be had. So is colour.
///
/// One frame at a time, in order; the frames may come from any thread. The result does not depend
/// on how many threads the pool has.
class FrameScaler {
public:
    /// Both sides above zero; `factor` 2 or 4. The pool must outlive the scaler.
    FrameScaler(PixelSize source, int factor, WorkerPool& pool);
    ~FrameScaler();

    /// `source` and `target` must have the constructor's size and `factor` times it.
    void scale(const SourceFrame& source, const TargetFrame& target);

    /// The next frame has none before it.
    void forget();

private:
    struct Buffers;

    void load(const SourceFrame& source);
    void carry();
    void enlarge();
    void agree(const TargetFrame& target);
    void doubleAgain(const TargetFrame& target);

    PixelSize size_;
    int factor_;
    WorkerPool& pool_;
    std::unique_ptr<Buffers> buffers_;
    bool hasHistory_ = false;
    float noise_ = 0;
};

}  // namespace quillmere::scaler
