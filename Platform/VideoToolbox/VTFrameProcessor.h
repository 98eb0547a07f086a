// The frame scaler's session: frames in, one at a time, larger frames out.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "Base/MediaTime.h"
#include "Base/Result.h"
#include "Platform/CoreImage/CVPixelBuffer.h"

namespace quillmere {

/// A pixel buffer at its time; holds the buffer, so that no pool gives it out again.
class VTFrameProcessorFrame {
public:
    /// A frame to read. Null where there is no buffer or no known time.
    static std::shared_ptr<const VTFrameProcessorFrame> initWithBuffer(CVPixelBufferRef buffer,
                                                                       MediaTime time) {
        return make(std::move(buffer), nullptr, time);
    }
    /// A frame to write, and to read afterwards.
    static std::shared_ptr<const VTFrameProcessorFrame> initWithBuffer(
        const std::shared_ptr<CVPixelBuffer>& buffer, MediaTime time) {
        return make(buffer, buffer, time);
    }

    const CVPixelBufferRef& buffer() const { return buffer_; }
    /// Null where the frame is only to be read.
    const std::shared_ptr<CVPixelBuffer>& writableBuffer() const { return writable_; }
    MediaTime presentationTimeStamp() const { return time_; }

private:
    VTFrameProcessorFrame(CVPixelBufferRef buffer, std::shared_ptr<CVPixelBuffer> writable,
                          MediaTime time)
        : buffer_(std::move(buffer)), writable_(std::move(writable)), time_(time) {}

    static std::shared_ptr<const VTFrameProcessorFrame> make(
        CVPixelBufferRef buffer, std::shared_ptr<CVPixelBuffer> writable, MediaTime time) {
        if (!buffer || !time.isKnown()) return nullptr;
        return std::shared_ptr<const VTFrameProcessorFrame>(
            new VTFrameProcessorFrame(std::move(buffer), std::move(writable), time));
    }

    CVPixelBufferRef buffer_;
    std::shared_ptr<CVPixelBuffer> writable_;
    MediaTime time_;
};

using VTFrameProcessorFrameRef = std::shared_ptr<const VTFrameProcessorFrame>;

/// What one run of the scaler gets. There is no optical flow: the scaler finds motion by itself.
struct VTSuperResolutionScalerParameters {
    /// Frames come in the order of presentation, each with the one before it.
    static constexpr int kSequential = 2;

    VTFrameProcessorFrameRef sourceFrame;
    VTFrameProcessorFrameRef previousFrame;        // null for the first frame of a session
    VTFrameProcessorFrameRef previousOutputFrame;  // null together with it
    int submissionMode = kSequential;
    VTFrameProcessorFrameRef destinationFrame;

    /// Nothing where source or destination is missing, the destination can't be written, or only
    /// one of the previous frames is there.
    static std::optional<VTSuperResolutionScalerParameters> init(
        VTFrameProcessorFrameRef source, VTFrameProcessorFrameRef previous,
        VTFrameProcessorFrameRef previousOutput, int submissionMode,
        VTFrameProcessorFrameRef destination) {
        const bool isWhole = source && destination && destination->writableBuffer() &&
                             (previous == nullptr) == (previousOutput == nullptr);
        if (!isWhole) return std::nullopt;
        return VTSuperResolutionScalerParameters{std::move(source), std::move(previous),
                                                 std::move(previousOutput), submissionMode,
                                                 std::move(destination)};
    }
};

class VTSuperResolutionScalerConfiguration;

/// One operation at a time; which thread it comes from does not matter.
class VTFrameProcessor {
public:
    /// With nothing on success.
    using Completion =
        std::function<void(const VTSuperResolutionScalerParameters&, const std::optional<Error>&)>;

    virtual ~VTFrameProcessor() = default;

    /// Before the first frame. A session that runs is ended.
    virtual Result<void> startSession(const VTSuperResolutionScalerConfiguration&) = 0;

    /// Scales into the destination. Fails without a session, and with buffers of another size or
    /// format than the configuration's; the destination is then undefined. The completion runs
    /// once, on any thread, perhaps before this returns; what was written is visible to it.
    virtual void process(const VTSuperResolutionScalerParameters& parameters,
                         const Completion& completion) = 0;

    /// Gives back what the session held. Without a session, nothing.
    virtual void endSession() = 0;
};

}  // namespace quillmere
