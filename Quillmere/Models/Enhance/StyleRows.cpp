#include "Quillmere/Models/Enhance/StyleRows.h"

namespace quillmere {

std::vector<std::vector<EnhanceStyle>> styleRows(bool holdsVideo, const Device& device,
                                                 const VideoToolbox& videoToolbox) {
    using enum EnhanceStyle;
    std::vector<std::vector<EnhanceStyle>> rows = {
        {original, high, superHigh},
        {godHigh, oniHigh, kyokuHigh},
        {speedGeneral, speedAnime, superSpeed},
    };
    if (holdsVideo && device.systemVersion() >= videoSuperResolutionSystemVersion &&
        videoToolbox.superResolutionScalerIsSupported()) {
        rows.push_back({rapidHQ});
    }
    return rows;
}

StyleLabelColor styleLabelColor(EnhanceStyle style, EnhanceStyle selected, bool holdsVideo) {
    if (style == selected) return StyleLabelColor::white;
    const bool slowOnVideo = style >= EnhanceStyle::high && style <= EnhanceStyle::kyokuHigh;
    return holdsVideo && slowOnVideo ? StyleLabelColor::gray : StyleLabelColor::primary;
}

}  // namespace quillmere
