// Saving a picture as a new asset of the photo library, and waiting for it.
#pragma once

#include "Base/Result.h"
#include "CommandLine/PictureFormat.h"
#include "Desktop/DesktopPlatform.h"
#include "Quillmere/Models/Services/ImageMetadataHelper.h"

namespace quillmere::cli {

/// As the application saves it. Not on the main thread. A process that ends meanwhile leaves the
/// whole asset or nothing of it.
Result<void> saveToLibrary(DesktopPlatform& platform, const UIImage& picture, PictureFormat format,
                           const ImageMetadataHelper::OriginalMetadata& kept);

}  // namespace quillmere::cli
