// What support wants to know of a user's machine.
#pragma once

#include <string>

namespace quillmere {

/// Any thread.
class UIDevice {
public:
    virtual ~UIDevice() = default;

    /// What its owner calls it.
    virtual std::string name() const = 0;
    /// The version of the system as its maker writes it.
    virtual std::string systemVersion() const = 0;
};

}  // namespace quillmere
