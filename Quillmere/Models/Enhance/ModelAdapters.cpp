#include "Quillmere/Models/Enhance/ModelAdapters.h"

#include "Base/Invariant.h"

namespace quillmere {

Result<MLModelRef> loadModelResource(const ModelResource& resource, CoreML& coreML,
                                     const Bundles& bundles,
                                     const MLModelConfiguration& configuration) {
    const auto url = bundles.bundleForClass(resource.className)
                         .urlForResource(resource.resourceName, "mlmodelc");
    if (!url) invariantBroken();
    return coreML.modelWithContentsOfURL(*url, configuration);
}

}  // namespace quillmere
