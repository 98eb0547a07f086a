// Lazy image algebra: a picture is described step by step and rendered once.
//
// The space of an image has its y axis pointing up. An image made from pixels has the extent
// (0, 0, width, height), its first row at the top. Images are immutable, share their parts and
// may be used from any thread. An image is only combined with images of the same `CoreImage`.
#pragma once

#include <memory>
#include <optional>

#include "Base/Geometry.h"
#include "Platform/CoreImage/CVPixelBuffer.h"
#include "Platform/Graphics/UIImage.h"

namespace quillmere {

class CIImage;
using CIImageRef = std::shared_ptr<const CIImage>;

class CIImage {
public:
    virtual ~CIImage() = default;

    /// The smallest rectangle outside which the image is transparent by construction.
    virtual Rect extent() const = 0;

    /// Keeps what lies inside `rect` (whole pixels); coordinates stay as they are.
    virtual CIImageRef imageByCroppingToRect(const Rect& rect) const = 0;

    /// Moves by whole pixels, or scales by 1/n with n a whole number. A pixel scaled by 1/n is the
    /// mean of the n by n pixels under it, rounded, halves up, on a grid that starts at the
    /// origin; the extent's four edges must be multiples of n. Other transforms, and rectangles
    /// between pixels, are a broken invariant.
    virtual CIImageRef imageByApplyingTransform(const AffineTransform& transform) const = 0;

    /// This image over `background`, source over.
    virtual CIImageRef imageByCompositingOverImage(const CIImageRef& background) const = 0;
};

struct CIContextOptions {
    bool useSoftwareRenderer = false;  // a hint; ignored where there is only one renderer
    bool cacheIntermediates = true;    // a hint; ignored where nothing is cached
};

/// Renders images. Safe to use from any thread at once.
class CIContext {
public:
    virtual ~CIContext() = default;

    /// The bitmap of `rect` (whole pixels), its top row first, transparent where the image has
    /// nothing; null for an empty rectangle or where memory ran out.
    virtual std::optional<CGImage> createCGImage(const CIImage& image, const Rect& rect) = 0;

    /// Draws `bounds` (whole pixels) of the image into `buffer`, an RGBA or BGRA one: its top left
    /// corner at the buffer's, cut where the buffer ends. Everything else in the buffer becomes
    /// black, and transparent places lie on black. A buffer's whole picture may come with its
    /// backing instead of its pixels. False where memory ran out.
    virtual bool renderToCVPixelBuffer(const CIImage& image, CVPixelBuffer& buffer,
                                       const Rect& bounds) = 0;
};

class CoreImage {
public:
    virtual ~CoreImage() = default;

    /// The picture's bitmap as it is stored; null for a picture without one.
    virtual CIImageRef imageWithImage(const UIImage& picture) = 0;
    /// Null for a format other than RGBA and BGRA, and where memory ran out.
    virtual CIImageRef imageWithCVPixelBuffer(const CVPixelBufferRef& buffer) = 0;
    virtual std::unique_ptr<CIContext> makeContext(const CIContextOptions& options) = 0;
};

}  // namespace quillmere
