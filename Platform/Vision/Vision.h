// Running a network on a picture.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "Base/Result.h"
#include "Platform/CoreImage/CoreImage.h"
#include "Platform/CoreML/CoreML.h"

namespace quillmere {

/// A network that takes one picture and is ready for requests.
class VNCoreMLModel {
public:
    virtual ~VNCoreMLModel() = default;
};

/// Something that a request found; what it is, its type tells.
class VNObservation {
public:
    virtual ~VNObservation() = default;
};

using VNObservationRef = std::shared_ptr<const VNObservation>;

/// A network's output picture.
class VNPixelBufferObservation final : public VNObservation {
public:
    explicit VNPixelBufferObservation(CVPixelBufferRef buffer) : buffer_(std::move(buffer)) {}
    const CVPixelBufferRef& pixelBuffer() const { return buffer_; }

private:
    CVPixelBufferRef buffer_;
};

/// One question to one network, which can be asked again and again, by one thread at a time.
class VNCoreMLRequest {
public:
    virtual ~VNCoreMLRequest() = default;

    /// What the last perform found; nothing before the first one or after a failed one.
    virtual std::optional<std::vector<VNObservationRef>> results() const = 0;
};

/// Named settings of a handler; none is known so far.
struct VNImageOptions {};

class VNImageRequestHandler {
public:
    virtual ~VNImageRequestHandler() = default;

    /// Runs the requests one after another on the handler's picture; the calling thread blocks.
    /// The picture is expected to have the size that the network takes.
    virtual Result<void> performRequests(std::span<VNCoreMLRequest* const> requests) = 0;
};

/// May be called from any thread.
class Vision {
public:
    virtual ~Vision() = default;

    /// Fails for a model that doesn't take a picture and give one.
    virtual Result<std::shared_ptr<VNCoreMLModel>> modelForMLModel(const MLModelRef& model) = 0;
    virtual std::unique_ptr<VNCoreMLRequest> requestWithModel(
        const std::shared_ptr<VNCoreMLModel>& model) = 0;
    virtual std::unique_ptr<VNImageRequestHandler> handlerWithCIImage(
        const CIImageRef& image, const VNImageOptions& options) = 0;
};

}  // namespace quillmere
