#include "Desktop/CoreML/NetworkModel.h"

#include <new>

#include "Desktop/CoreML/DesktopCoreML.h"

namespace quillmere {

Result<MLFeatureProviderRef> NetworkModel::predictionFromFeatures(
    const MLFeatureProvider& features) {
    const std::string& name = network_->inputName();
    const auto value = features.featureValueForName(name);
    const CVPixelBufferRef picture = value ? value->imageBufferValue() : nullptr;
    if (!picture) {
        return Error{coreMLErrorDomain, 1, "The network takes a picture named %@.", {name}};
    }
    Result<CVPixelBufferRef> output = enlarge(*picture);
    if (!output) return output.error();
    return makeFeatureProvider(
        {{"output", MLFeatureValue::featureValueWithPixelBuffer(*std::move(output))}});
}

Result<CVPixelBufferRef> NetworkModel::enlarge(const CVPixelBuffer& input) const {
    try {
        const PixelSize size{input.size().width * network_->scale(),
                             input.size().height * network_->scale()};
        const auto output = std::make_shared<CVPixelBuffer>(size, CVPixelFormat::rgba8);
        const auto done = network_->run({input.baseAddress(), input.bytesPerRow(), input.size()},
                                        {output->baseAddress(), output->bytesPerRow(), size});
        if (!done) return done.error();
        return CVPixelBufferRef(output);
    } catch (const std::bad_alloc&) {
        return Error{coreMLErrorDomain, 2, "There is not enough memory to run the network."};
    }
}

}  // namespace quillmere
