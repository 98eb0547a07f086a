// The machine, as its owner and its maker call it.
#pragma once

#include <QSysInfo>

#include "Platform/Application/UIDevice.h"

namespace quillmere {

class HostDevice final : public UIDevice {
public:
    std::string name() const override { return QSysInfo::machineHostName().toStdString(); }
    std::string systemVersion() const override {
        return QSysInfo::prettyProductName().toStdString();
    }
};

}  // namespace quillmere
