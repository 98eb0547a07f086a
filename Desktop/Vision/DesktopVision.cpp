#include "Desktop/Vision/DesktopVision.h"

#include <cstring>
#include <utility>

#include "Desktop/CoreML/NetworkModel.h"

namespace quillmere {
namespace {

constexpr const char* visionErrorDomain = "quillmere.vision";

class PictureModel final : public VNCoreMLModel {
public:
    explicit PictureModel(std::shared_ptr<NetworkModel> model) : model_(std::move(model)) {}
    const NetworkModel& network() const { return *model_; }

private:
    std::shared_ptr<NetworkModel> model_;
};

class PictureRequest final : public VNCoreMLRequest {
public:
    explicit PictureRequest(std::shared_ptr<const PictureModel> model) : model_(std::move(model)) {}

    std::optional<std::vector<VNObservationRef>> results() const override { return results_; }

    Result<void> perform(const CVPixelBuffer& picture) {
        results_.reset();
        Result<CVPixelBufferRef> output = model_->network().enlarge(picture);
        if (!output) return output.error();
        results_ = std::vector<VNObservationRef>{
            std::make_shared<VNPixelBufferObservation>(*std::move(output))};
        return {};
    }

private:
    std::shared_ptr<const PictureModel> model_;
    std::optional<std::vector<VNObservationRef>> results_;
};

class PictureHandler final : public VNImageRequestHandler {
public:
    PictureHandler(CIContext& context, CIImageRef image)
        : context_(context), image_(std::move(image)) {}

    Result<void> performRequests(std::span<VNCoreMLRequest* const> requests) override {
        const auto bitmap = context_.createCGImage(*image_, image_->extent());
        if (!bitmap) {
            return Error{visionErrorDomain, 1, "There is not enough memory for the picture."};
        }
        CVPixelBuffer picture(bitmap->size(), CVPixelFormat::rgba8);
        for (int y = 0; y < picture.size().height; ++y) {
            std::memcpy(picture.baseAddress() + static_cast<std::size_t>(y) * picture.bytesPerRow(),
                        bitmap->row(y), picture.bytesPerRow());
        }
        for (VNCoreMLRequest* request : requests) {
            if (auto done = static_cast<PictureRequest*>(request)->perform(picture); !done) {
                return done;
            }
        }
        return {};
    }

private:
    CIContext& context_;
    CIImageRef image_;
};

}  // namespace

Result<std::shared_ptr<VNCoreMLModel>> DesktopVision::modelForMLModel(const MLModelRef& model) {
    auto network = std::dynamic_pointer_cast<NetworkModel>(model);
    if (!network) return Error{visionErrorDomain, 2, "The model doesn't take a picture."};
    return std::shared_ptr<VNCoreMLModel>(std::make_shared<PictureModel>(std::move(network)));
}

std::unique_ptr<VNCoreMLRequest> DesktopVision::requestWithModel(
    const std::shared_ptr<VNCoreMLModel>& model) {
    return std::make_unique<PictureRequest>(std::static_pointer_cast<const PictureModel>(model));
}

std::unique_ptr<VNImageRequestHandler> DesktopVision::handlerWithCIImage(const CIImageRef& image,
                                                                         const VNImageOptions&) {
    return std::make_unique<PictureHandler>(*context_, image);
}

}  // namespace quillmere
