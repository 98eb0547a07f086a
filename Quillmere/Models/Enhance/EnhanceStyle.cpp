#include "Quillmere/Models/Enhance/EnhanceStyle.h"

#include "Base/Invariant.h"

namespace quillmere {

std::string_view displayKey(EnhanceStyle style) {
    switch (style) {
        case EnhanceStyle::original:
            return "original";
        case EnhanceStyle::high:
            return "high";
        case EnhanceStyle::superHigh:
            return "superHigh";
        case EnhanceStyle::godHigh:
            return "godHigh";
        case EnhanceStyle::oniHigh:
            return "oniHigh";
        case EnhanceStyle::kyokuHigh:
            return "kyokuHigh";
        case EnhanceStyle::speedGeneral:
            return "speedGeneral";
        case EnhanceStyle::speedAnime:
            return "speedAnime";
        case EnhanceStyle::superSpeed:
            return "superSpeed";
        case EnhanceStyle::rapidHQ:
            return "rapidHQ";
    }
    invariantBroken();
}

std::optional<int> outputScale(EnhanceStyle style) {
    switch (style) {
        case EnhanceStyle::original:
            return 1;
        case EnhanceStyle::high:
            return 2;
        case EnhanceStyle::rapidHQ:
            return std::nullopt;
        default:
            return 4;
    }
}

}  // namespace quillmere
