// The cropper that covers the home screen.
#pragma once

#include <functional>
#include <optional>
#include <utility>

#include "Base/Published.h"
#include "Platform/Graphics/UIImage.h"

namespace quillmere {

/// Made each time the cropper opens. Main thread.
class ImageCropper {
public:
    using Done = std::function<void(const UIImage&)>;

    ImageCropper(const Published<std::optional<UIImage>>& image, Published<bool>& visible,
                 Done done)
        : picture_(image.get().value_or(UIImage::withoutBitmap({0, 0}))),
          visible_(visible),
          done_(std::move(done)) {}

    /// What is to be cropped: an empty picture where there is none.
    const UIImage& picture() const { return picture_; }

    void didCropToImage(const UIImage& cropped) {
        visible_.set(false);
        done_(cropped);
    }
    void didFinishCancelled() { visible_.set(false); }

private:
    const UIImage picture_;
    Published<bool>& visible_;
    Done done_;
};

}  // namespace quillmere
