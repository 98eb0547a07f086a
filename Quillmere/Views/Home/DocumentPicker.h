// What becomes of a pick among files.
#pragma once

#include <filesystem>
#include <optional>
#include <vector>

#include "Base/Invariant.h"
#include "Base/Published.h"
#include "Platform/FileManager/FileManager.h"
#include "Platform/ImageIO/ImageIO.h"
#include "Platform/Photos/PHPickerResult.h"

namespace quillmere {

/// One picture, of any format; not several. Main thread.
struct DocumentPicker {
    Published<std::optional<UIImage>>& image;
    Published<std::optional<std::vector<PHPickerResult>>>& pickerResults;
    FileManager& fileManager;
    ImageIO& imageIO;

    /// A file that is no picture sets `image` to nothing. That it can be read is the caller's
    /// word: a failure to read it is a broken invariant. Blocks while it is read.
    void didPickDocumentsAtURLs(const std::vector<std::filesystem::path>& urls) const {
        const auto data = fileManager.contentsOfFile(urls.front());
        if (!data) invariantBroken();
        const auto picture = imageIO.imageWithData(*data);
        didDecode(picture ? std::optional(*picture) : std::nullopt);
    }

    /// The same for whoever has read and decoded it already, so as not to block.
    void didDecode(const std::optional<UIImage>& picture) const {
        // The mark of a picture from a file, of whose date and place nothing is kept.
        pickerResults.set(std::nullopt);
        image.set(picture);
    }
};

}  // namespace quillmere
