// Running the networks of the neural runtime on lazy images.
#pragma once

#include <memory>

#include "Platform/Vision/Vision.h"

namespace quillmere {

/// A picture keeps its size on its way into the network, whatever that is.
class DesktopVision final : public Vision {
public:
    /// `coreImage` made the images that will be handed over.
    explicit DesktopVision(CoreImage& coreImage) : context_(coreImage.makeContext({})) {}

    Result<std::shared_ptr<VNCoreMLModel>> modelForMLModel(const MLModelRef& model) override;
    std::unique_ptr<VNCoreMLRequest> requestWithModel(
        const std::shared_ptr<VNCoreMLModel>& model) override;
    std::unique_ptr<VNImageRequestHandler> handlerWithCIImage(
        const CIImageRef& image, const VNImageOptions& options) override;

private:
    std::unique_ptr<CIContext> context_;
};

}  // namespace quillmere
