// The project settings, from one JSON object among the resources.
#pragma once

#include <filesystem>

#include "Platform/Application/Console.h"
#include "Platform/FileManager/FileManager.h"
#include "Quillmere/Models/Services/ProjectSettings.h"

namespace quillmere {

/// Never fails: what is missing is empty. So is what is of a wrong type or form or unknown, and a
/// file that is missing or unreadable; each of these is a line on the console.
ProjectSettings readProjectSettings(FileManager& fileManager, const std::filesystem::path& path,
                                    Console& console);

}  // namespace quillmere
