#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Vision/Vision.h"
#include "Tests/Fakes/CallLog.h"

namespace quillmere {

/// Runs `network` on the rendered picture of each handler, and fails where it is told to.
class FakeVision final : public Vision {
public:
    /// `coreImage` renders the handlers' pictures.
    FakeVision(CallLog& log, CoreImage& coreImage)
        : log_(log), context_(coreImage.makeContext({})) {}

    /// 256 by 256 in, 1024 by 1024 out; by default each pixel four times larger, opaque.
    std::function<CVPixelBufferRef(const CGImage&)> network = enlargePixels;
    std::optional<Error> modelError;
    std::map<int, Error> performErrors;  // by the number of the perform, from 0
    /// What a perform leaves in `results`; by default the observation of the network's output.
    std::function<std::optional<std::vector<VNObservationRef>>(CVPixelBufferRef)> observe =
        [](CVPixelBufferRef buffer) {
            return std::vector<VNObservationRef>{
                std::make_shared<VNPixelBufferObservation>(std::move(buffer))};
        };
    int performs = 0;

    Result<std::shared_ptr<VNCoreMLModel>> modelForMLModel(const MLModelRef&) override {
        log_.record("modelForMLModel");
        if (modelError) return *modelError;
        return std::make_shared<VNCoreMLModel>();
    }

    std::unique_ptr<VNCoreMLRequest> requestWithModel(
        const std::shared_ptr<VNCoreMLModel>&) override {
        log_.record("requestWithModel");
        return std::make_unique<Request>();
    }

    std::unique_ptr<VNImageRequestHandler> handlerWithCIImage(const CIImageRef& image,
                                                              const VNImageOptions&) override {
        log_.record("handler");
        return std::make_unique<Handler>(*this, image);
    }

    static CVPixelBufferRef enlargePixels(const CGImage& tile) {
        constexpr int scale = 4;
        const PixelSize size{tile.size().width * scale, tile.size().height * scale};
        const auto buffer = std::make_shared<CVPixelBuffer>(size, CVPixelFormat::rgba8);
        for (int y = 0; y < size.height; ++y) {
            const std::uint8_t* from = tile.row(y / scale);
            std::uint8_t* to =
                buffer->baseAddress() + static_cast<std::size_t>(y) * buffer->bytesPerRow();
            for (int x = 0; x < size.width; ++x, to += 4) {
                for (int c = 0; c < 3; ++c) to[c] = from[x / scale * 4 + c];
                to[3] = 255;
            }
        }
        return buffer;
    }

private:
    class Request final : public VNCoreMLRequest {
    public:
        std::optional<std::vector<VNObservationRef>> results() const override { return found; }
        std::optional<std::vector<VNObservationRef>> found;
    };

    class Handler final : public VNImageRequestHandler {
    public:
        Handler(FakeVision& owner, CIImageRef image) : owner_(owner), image_(std::move(image)) {}

        Result<void> performRequests(std::span<VNCoreMLRequest* const> requests) override {
            owner_.log_.record("perform");
            const int number = owner_.performs++;
            for (VNCoreMLRequest* asked : requests) {
                auto& request = static_cast<Request&>(*asked);
                request.found.reset();
                if (const auto error = owner_.performErrors.find(number);
                    error != owner_.performErrors.end()) {
                    return error->second;
                }
                const auto tile = owner_.context_->createCGImage(*image_, image_->extent());
                request.found = owner_.observe(owner_.network(*tile));
            }
            return {};
        }

    private:
        FakeVision& owner_;
        CIImageRef image_;
    };

    CallLog& log_;
    std::unique_ptr<CIContext> context_;
};

}  // namespace quillmere
