// Getting at the store of settings, whatever became of its file.
#pragma once

#include <filesystem>
#include <memory>

#include "Base/Result.h"
#include "Desktop/UserDefaults/SettingsStore.h"
#include "Platform/Application/Console.h"

namespace quillmere {

/// Opens the store in `file`, and makes file and folders (for their user alone) where they are
/// missing. A damaged file is moved aside to a name of its own in the same folder, as the console
/// is told, and the store begins anew; that is never done to one that is only locked, unreadable
/// or on a failing disk. What can't be written is opened to be read.
///
/// Any process may do so at the same time. Errors are those of `SettingsStore`.
Result<std::unique_ptr<SettingsStore>> openSettingsFile(const std::filesystem::path& file,
                                                        Console& console);

}  // namespace quillmere
