// Where to show something that belongs to no screen.
#pragma once

#include "Platform/Application/UIApplication.h"
#include "Platform/CrashLog/CrashLog.h"

namespace quillmere {

/// The controller that lies over all others in the key window of the first scene; of a navigation
/// stack its bottom, not what is seen, and of tabs the selected one. Nothing where there is no such
/// window or controller; the crash log says which link was missing. Main thread.
UIViewController* topViewController(const UIApplication& application, CrashLog& crashLog);

}  // namespace quillmere
