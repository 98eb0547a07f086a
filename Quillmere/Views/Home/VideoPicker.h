// What becomes of a video that was picked in the photo library.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

#include "Base/Published.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/FileManager/FileManager.h"
#include "Platform/Localization/Localization.h"
#include "Platform/Photos/PHPickerResult.h"
#include "Quillmere/Models/Video/VideoFileManager.h"
#include "Quillmere/Views/Common/AlertTypes.h"

namespace quillmere {

/// The picker of one video, as it is, bound to fields that outlive it, which are written on the
/// main queue.
struct VideoPicker {
    static constexpr int selectionLimit = 1;

    Dispatch& dispatch;
    FileManager& fileManager;
    VideoFileManager& videoFiles;
    const Localization& localization;
    Published<std::optional<std::filesystem::path>>& videoURL;
    Published<std::optional<AlertTypes>>& alert;
    Published<bool>& isPresented;
    /// Of the fields, if they need one: held until they have been written, or will not be.
    std::shared_ptr<const void> owner = nullptr;

    /// Copies the first pick into the work area, on the provider's thread. Nothing happens for a
    /// cancel, for an item that is no file, and for one that can't be had; a copy that fails is
    /// told by an alert.
    void didFinishPicking(const std::vector<PHPickerResult>& results) const;

private:
    Result<std::filesystem::path> copied(const std::filesystem::path& url) const;
};

}  // namespace quillmere
