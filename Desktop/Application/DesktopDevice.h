// What the desktop says of itself.
#pragma once

#include "Platform/Application/Device.h"

namespace quillmere {

/// A version whose ports are all answered here, the frame scaler's among them.
class DesktopDevice final : public Device {
public:
    SystemVersion systemVersion() const override { return {26, 0}; }
};

}  // namespace quillmere
