// Owners of what libvips hands out.
#pragma once

#include <vips/vips.h>

#include <memory>

namespace quillmere {

struct GObjectDeleter {
    void operator()(void* object) const { g_object_unref(object); }
};
using VipsImageRef = std::unique_ptr<VipsImage, GObjectDeleter>;
using VipsRegionRef = std::unique_ptr<VipsRegion, GObjectDeleter>;
using VipsInterpolateRef = std::unique_ptr<VipsInterpolate, GObjectDeleter>;

struct VipsAreaDeleter {
    void operator()(void* area) const { vips_area_unref(static_cast<VipsArea*>(area)); }
};
using VipsArrayIntRef = std::unique_ptr<VipsArrayInt, VipsAreaDeleter>;
using VipsBlobRef = std::unique_ptr<VipsBlob, VipsAreaDeleter>;

struct GFreeDeleter {
    void operator()(void* memory) const { g_free(memory); }
};

/// The image that `operation(VipsImage** out)` leaves behind, or null where it says failure.
template <class Operation>
VipsImageRef vipsResult(const Operation& operation) {
    VipsImage* out = nullptr;
    return operation(&out) == 0 ? VipsImageRef(out) : nullptr;
}

}  // namespace quillmere
