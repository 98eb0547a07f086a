// What becomes of a pick in the photo library.
#pragma once

#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "Base/Published.h"
#include "Platform/ImageIO/ImageIO.h"
#include "Platform/Photos/PHPickerResult.h"

namespace quillmere {

/// The picker of pictures, bound to fields that outlive it. Main thread, except
/// that the picture is written on the thread that loaded it.
class ImagePicker {
public:
    struct Bindings {
        Published<std::optional<UIImage>>& image;
        Published<std::optional<std::vector<PHPickerResult>>>& pickerResults;
        Published<bool>& isPresented;
    };

    /// `owner` of the fields, if they need one, is held until the picture has been written, or is
    /// known not to come.
    ImagePicker(Bindings bindings, bool selectMultiple, ImageIO& imageIO,
                std::shared_ptr<const void> owner = nullptr)
        : bindings_(bindings),
          selectMultiple_(selectMultiple),
          imageIO_(imageIO),
          owner_(std::move(owner)) {}

    /// How many pictures may be picked; 0 is no limit, and at 1 the first tap closes the picker.
    int selectionLimit() const { return selectMultiple_ ? 0 : 1; }

    /// The picks in their order; none for a cancel, which changes nothing. Only the first picture
    /// is loaded here. One that can't be loaded leaves the screen as it was, but for the picks.
    void didFinishPicking(const std::vector<PHPickerResult>& results);

private:
    Bindings bindings_;
    const bool selectMultiple_;
    ImageIO& imageIO_;
    const std::shared_ptr<const void> owner_;
};

}  // namespace quillmere
