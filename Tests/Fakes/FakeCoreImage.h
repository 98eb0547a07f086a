// The image algebra worked out at once, pixel by pixel: the twin of every lazy renderer.
#pragma once

#include <atomic>
#include <set>

#include "Platform/CoreImage/CoreImage.h"
#include "Tests/Fakes/CallLog.h"

namespace quillmere {

/// Each image holds all pixels of its extent, so a long chain of compositions costs its length
/// times its area; keep pictures in tests small.
///
/// Records `imageWithImage`, `imageWithCVPixelBuffer`, `crop 6,24 976,1000`, `translate 976,1952`,
/// `scale 0.5`, `compositeOver`, `makeContext software=0 cacheIntermediates=0`,
/// `createCGImage 0,982 1982,1018` (x,y width,height) and `render 0,0 64,48`. The log outlives
/// everything made here. Any thread.
class FakeCoreImage : public CoreImage {
public:
    explicit FakeCoreImage(CallLog& log) : log_(log) {}

    CIImageRef imageWithImage(const UIImage& picture) override;
    CIImageRef imageWithCVPixelBuffer(const CVPixelBufferRef& buffer) override;
    /// The context must not outlive the fake.
    std::unique_ptr<CIContext> makeContext(const CIContextOptions& options) override;

    std::set<int> refusedImages;             // which calls of `imageWithImage` give null, from 0
    std::atomic<bool> refuseRender = false;  // every render fails

private:
    class Context;

    CallLog& log_;
    std::atomic<int> images_ = 0;
};

}  // namespace quillmere
