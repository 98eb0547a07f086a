// Frames of one layout in another.
#pragma once

#include "Desktop/AVFoundation/FrameLayout.h"

namespace quillmere {

/// Keeps what it needs for one pair of layouts, until it meets another. One thread at a time.
class LayoutScaler {
public:
    /// `to` has memory of its own, with room for whole vectors behind its rows. 0 or more, or an
    /// error of FFmpeg.
    int scale(const AVFrame& from, const FrameLayout& source, AVFrame& to,
              const FrameLayout& result);

private:
    int prepare(const FrameLayout& source, const FrameLayout& result);

    FrameLayout from_, to_;
    SwsContextRef context_;
};

}  // namespace quillmere
