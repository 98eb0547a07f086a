// How the detail screen arranges and colours the styles.
#pragma once

#include <vector>

#include "Platform/Application/Device.h"
#include "Platform/VideoToolbox/VideoToolbox.h"
#include "Quillmere/Models/Enhance/EnhanceStyle.h"

namespace quillmere {

/// The rows from the top, each from its leading side. Three of pictures' styles; a fourth with
/// `rapidHQ` where the screen holds a video and this system has the frame scaler.
std::vector<std::vector<EnhanceStyle>> styleRows(bool holdsVideo, const Device& device,
                                                 const VideoToolbox& videoToolbox);

/// The first system version with the frame scaler.
inline constexpr SystemVersion videoSuperResolutionSystemVersion{26, 0};

enum class StyleLabelColor { white, gray, primary };

/// Gray warns that the style is slow on a video; the button works all the same.
StyleLabelColor styleLabelColor(EnhanceStyle style, EnhanceStyle selected, bool holdsVideo);

}  // namespace quillmere
