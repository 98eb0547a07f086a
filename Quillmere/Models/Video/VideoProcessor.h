// Encodes a video anew, frame by frame, while its sound goes along beside it.
#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>

#include "Platform/AVFoundation/AVFoundation.h"
#include "Platform/Application/Console.h"
#include "Platform/CoreImage/CoreImage.h"
#include "Platform/CrashLog/CrashLog.h"
#include "Platform/FileManager/FileManager.h"
#include "Quillmere/Models/Video/SuperResolutionContext.h"

namespace quillmere {

/// One job after another: from `startProcessing` to the call of the completion handler.
///
/// | thread                        | what runs there                                          |
/// |-------------------------------|----------------------------------------------------------|
/// | the caller's                  | the set-up, its failure with the completion handler      |
/// | `videoQueue`                  | the video drain, image handler, progress of the picture  |
/// | `audioQueue`                  | the audio drain, progress of the sound                   |
/// | main queue                    | the tracks' ends, and mostly the end of the job          |
/// | one of the platform's         | the end of the job, where the file had to be finished    |
///
/// It lives by shared pointers: the platform's blocks hold it weakly, those on the main queue
/// strongly. Handlers may be set on any thread, before a job.
class VideoProcessor : public std::enable_shared_from_this<VideoProcessor> {
public:
    struct Ports {
        AVFoundation& avFoundation;
        AudioToolbox& audioToolbox;
        VideoToolbox& videoToolbox;
        CoreImage& coreImage;
        Dispatch& dispatch;
        FileManager& fileManager;
        CrashLog& crashLog;
        const Device& device;
        const Localization& localization;
        Console& console;
    };

    /// Frames go through the image handler, or, with a factor, through the system's scaler.
    struct Mode {
        std::optional<int> scaleFactor;

        static Mode standard() { return {}; }
        static Mode superResolution(int factor) { return {factor}; }
    };

    /// 0 to 1, in jumps; both tracks together. A new job begins and ends with two calls with 0.
    using ProgressHandler = std::function<void(float progress)>;
    /// Once for each job. No error means that there is a file, or that the job was cancelled:
    /// `isForceCancel` tells them apart until the handler returns. Must not wait for the main
    /// queue.
    using CompletionHandler = std::function<void(const std::optional<Error>& error)>;
    /// A stored frame in, its picture for the new movie out; null keeps the frame as it is. Blocks
    /// the pipeline as long as it likes.
    using ImageProcessingHandler = std::function<CIImageRef(const CIImageRef& frame)>;

    explicit VideoProcessor(const Ports& ports);

    void setProgressHandler(ProgressHandler handler);
    void setCompletionHandler(CompletionHandler handler);
    void setImageProcessingHandler(ImageProcessingHandler handler);
    /// 0 to 1, for the jobs to come; without one, a movie keeps to the data rate of its source. The
    /// application asks for none.
    void setVideoQuality(std::optional<float> quality);

    /// Starts a job; blocks while the scaler's model is fetched. `width` and `height` are those of
    /// the new movie in pixels: upright ones in the standard mode, of stored frames in the other.
    /// A failure of the set-up comes through the completion handler before this returns. While a
    /// job runs, no other may start.
    void startProcessing(const AVAssetRef& asset, const std::filesystem::path& outputUrl, Mode mode,
                         double width, double height);

    /// The one way to cancel, from any thread: takes effect after the frame in progress. The file
    /// is deleted. Cleared at the end of the job.
    void setForceCancel() { isForceCancel_.store(true, std::memory_order_relaxed); }
    bool isForceCancel() const { return isForceCancel_.load(std::memory_order_relaxed); }

    /// Blocks until nothing of a job is left whose completion handler has been called: from then
    /// on the ports are used no more. Not for that handler.
    void waitForEnd() { const std::lock_guard over(finishMutex_); }

    float progress() const { return progress_.load(std::memory_order_relaxed); }

private:
    using Adaptor = std::shared_ptr<AVAssetWriterInputPixelBufferAdaptor>;

    /// What one thread clears while another uses it: copied as a whole.
    struct Handles {
        ProgressHandler progressHandler;
        CompletionHandler completionHandler;
        ImageProcessingHandler imageProcessingHandler;
        std::optional<float> videoQuality;
        AVAssetRef asset;
        std::filesystem::path outputUrl;
        /// Tells what an ended job left behind, on a queue, from what the next one does.
        std::uint64_t jobNumber = 0;

        // Of one job.
        std::shared_ptr<AVAssetReader> reader;
        std::shared_ptr<AVAssetWriter> writer;
        AVAssetReaderTrackOutputRef videoOutput;
        AVAssetReaderTrackOutputRef audioOutput;  // null where there is no sound
        AVAssetWriterInputRef videoInput;
        AVAssetWriterInputRef audioInput;  // null as well where the writer refused the sound
        Mode currentMode;
        std::optional<Error> processingError;
        std::shared_ptr<SuperResolutionContext> superResolution;
    };

    Handles handles() const;
    template <class Change>
    void change(const Change& change) {
        const std::lock_guard lock(handlesMutex_);
        change(handles_);
    }
    Error failure(std::string_view key) const;

    // The set-up, on the caller's thread; VideoProcessorSetUp.cpp.
    Result<Adaptor> setUp(double width, double height);
    Result<AVReaderOutputSettings> videoReaderSettings(const AVAssetTrack& track, Mode mode);
    Result<void> setUpAudio(const AVAssetTrackRef& track);
    void startVideoTrack(const Adaptor& adaptor);
    void startAudioTrack();

    // The drains, each on its queue; VideoProcessorDrains.cpp.
    void drainVideo(std::uint64_t number, const Adaptor& adaptor);
    bool takeStandardFrame(const Handles& job, const CMSampleBufferRef& sample,
                           AVAssetWriterInputPixelBufferAdaptor& adaptor);
    Result<void> takeSuperResolutionFrame(const Handles& job, const CMSampleBuffer& sample,
                                          AVAssetWriterInputPixelBufferAdaptor& adaptor);
    void drainSuperResolution(std::uint64_t number, const Adaptor& adaptor);
    void drainAudio(std::uint64_t number);
    void postToMain(std::uint64_t number, Block step);
    void postVideoCompleted(std::uint64_t number, const char* text);

    // The main queue's steps.
    void markVideoCompleted(std::string_view text);
    void markAudioDrained(bool stopped);
    void markAudioCompleted(std::string_view text);
    void failSuperResolution(const Error& error);

    void setVideoProgress(float value);
    void setAudioProgress(float value);
    void setProgress(float value, const Handles& job);
    void tryFinish();
    void finish();
    void resetState();

    Ports ports_;
    const std::shared_ptr<DispatchQueue> videoQueue_;
    const std::shared_ptr<DispatchQueue> audioQueue_;
    const std::unique_ptr<CIContext> ciContext_;

    /// Held by the decision of `tryFinish`, by `finish`, and by the reset before a job, so that
    /// the end of a job is over when the next one begins.
    std::recursive_mutex finishMutex_;
    mutable std::mutex handlesMutex_;
    Handles handles_;

    // Read by the drains without a lock; being late costs them one frame at most.
    std::atomic<bool> isForceCancel_ = false;
    std::atomic<bool> videoCompleted_ = false;
    std::atomic<bool> audioCompleted_ = false;
    std::atomic<float> progress_ = 0;
    std::atomic<float> videoProgress_ = 0;
    std::atomic<float> audioProgress_ = 0;
};

}  // namespace quillmere
