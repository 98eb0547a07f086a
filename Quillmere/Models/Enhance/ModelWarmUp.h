// One throw-away prediction at start, so that the first conversion finds its network prepared.
#pragma once

#include "Platform/Application/Console.h"
#include "Platform/CoreML/CoreML.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Quillmere/Models/Enhance/EnhanceStyle.h"
#include "Quillmere/Models/Enhance/ModelCatalogue.h"

namespace quillmere {

/// No failure of it reaches the user, an event or a later conversion. Must outlive its blocks.
class ModelWarmUp {
public:
    ModelWarmUp(const ModelCatalogue& catalogue, CoreML& coreML, Dispatch& dispatch,
                Console& console)
        : catalogue_(catalogue), coreML_(coreML), dispatch_(dispatch), console_(console) {}

    /// Posts `warmUpModel` to a global queue and returns at once.
    void scheduleModelWarmUp(EnhanceStyle style);

    /// Blocks the calling thread. Its console line says that the work was asked for, not that the
    /// prediction succeeded: only the preparation that it triggers is of interest.
    void warmUpModel(EnhanceStyle style);

private:
    const ModelCatalogue& catalogue_;
    CoreML& coreML_;
    Dispatch& dispatch_;
    Console& console_;
};

}  // namespace quillmere
