#include "Quillmere/Models/Enhance/ModelCatalogue.h"

#include "Base/Invariant.h"
#include "Quillmere/Models/Enhance/ModelAdapters.h"

namespace quillmere {
namespace {

template <class Adapter>
MLModelRef load(CoreML& coreML, const Bundles& bundles, const MLModelConfiguration& configuration) {
    const Result<Adapter> adapter = Adapter::load(coreML, bundles, configuration);
    return adapter ? adapter->model : nullptr;
}

}  // namespace

MLModelRef ModelCatalogue::makeModel(EnhanceStyle style) const {
    const MLModelConfiguration configuration;
    switch (style) {
        case EnhanceStyle::original:
        case EnhanceStyle::rapidHQ:
            return nullptr;
        case EnhanceStyle::high:
        case EnhanceStyle::superHigh:
            return load<bsrgan8>(coreML_, bundles_, configuration);
        case EnhanceStyle::godHigh:
            return load<real8>(coreML_, bundles_, configuration);
        case EnhanceStyle::oniHigh:
            return load<aesrgan8_single>(coreML_, bundles_, configuration);
        case EnhanceStyle::kyokuHigh:
            return load<MMRealSRGAN_8>(coreML_, bundles_, configuration);
        case EnhanceStyle::speedGeneral:
            return load<real256_general_8>(coreML_, bundles_, configuration);
        case EnhanceStyle::speedAnime:
            return load<real256_anime_8>(coreML_, bundles_, configuration);
        case EnhanceStyle::superSpeed:
            return load<fast_srgan>(coreML_, bundles_, configuration);
    }
    invariantBroken();
}

}  // namespace quillmere
