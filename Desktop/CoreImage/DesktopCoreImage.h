// Image algebra on the processor: described lazily, rendered in bands on all cores.
#pragma once

#include "Base/WorkerPool.h"
#include "Platform/CoreImage/CoreImage.h"

namespace quillmere {

/// Nothing is computed before `createCGImage`, which takes time in proportion to the pixels of
/// the result and of the parts that it shows. The hints of `CIContextOptions` have no effect.
///
/// The pool must outlive this and its contexts. Any thread; renders share the pool one by one.
class DesktopCoreImage : public CoreImage {
public:
    explicit DesktopCoreImage(WorkerPool& pool) : pool_(pool) {}

    CIImageRef imageWithImage(const UIImage& picture) override;
    CIImageRef imageWithCVPixelBuffer(const CVPixelBufferRef& buffer) override;
    std::unique_ptr<CIContext> makeContext(const CIContextOptions& options) override;

private:
    WorkerPool& pool_;
};

}  // namespace quillmere
