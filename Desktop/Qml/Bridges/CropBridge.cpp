#include "Desktop/Qml/Bridges/CropBridge.h"

namespace quillmere {

Picture CropBridge::picture() const {
    const auto upright = crop_.uprightPicture(graphics_);
    if (!upright || !upright->cgImage()) return {};
    return {UIImage(*upright->cgImage(), 1, crop_.orientation.get())};
}

}  // namespace quillmere
