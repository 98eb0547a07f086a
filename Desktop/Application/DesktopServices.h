// The services that watch the application, on the desktop: all of them local.
#pragma once

#include "Platform/Application/FIRApp.h"
#include "Platform/CrashLog/CrashLog.h"

namespace quillmere {

/// The adapters of events, crashes and remote values are ready once they are made; what is left to
/// configure is the mark from which on the steps of the application itself are recorded.
class DesktopServices final : public FIRApp {
public:
    explicit DesktopServices(CrashLog& crashLog) : crashLog_(crashLog) {}

    void configure() override { crashLog_.log("application started"); }

private:
    CrashLog& crashLog_;
};

}  // namespace quillmere
