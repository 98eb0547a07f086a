// Which network draws which style.
#pragma once

#include "Platform/Application/Bundle.h"
#include "Platform/CoreML/CoreML.h"
#include "Quillmere/Models/Enhance/EnhanceStyle.h"

namespace quillmere {

/// The catalogue is fixed in code. Safe to use from any thread.
class ModelCatalogue {
public:
    ModelCatalogue(CoreML& coreML, const Bundles& bundles) : coreML_(coreML), bundles_(bundles) {}

    /// Loads the style's network anew and hands it over; blocks for the length of the load.
    /// Null for `original` and `rapidHQ`, which have none, and where the load failed.
    MLModelRef makeModel(EnhanceStyle style) const;

private:
    CoreML& coreML_;
    const Bundles& bundles_;
};

}  // namespace quillmere
