// What the machine says of itself.
#pragma once

#include <compare>

namespace quillmere {

/// The platform's version, compared number by number.
struct SystemVersion {
    int major = 0;
    int minor = 0;

    friend auto operator<=>(const SystemVersion&, const SystemVersion&) = default;
};

class Device {
public:
    virtual ~Device() = default;

    virtual SystemVersion systemVersion() const = 0;
};

}  // namespace quillmere
