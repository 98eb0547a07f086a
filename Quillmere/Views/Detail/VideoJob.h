// The videos of the detail screen: from a tap on save to a file, a cancel or an alert.
#pragma once

#include <atomic>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>

#include "Quillmere/Models/Video/VideoFileManager.h"
#include "Quillmere/Models/Video/VideoProcessor.h"
#include "Quillmere/Views/Detail/DetailPorts.h"

namespace quillmere {

class DetailViewModel;

/// Lives beside one `DetailViewModel`, whose fields it writes on the main thread, and serves all
/// its jobs, one after the other. Main thread, unless said otherwise.
///
/// A job sets `isVideoProcessing` and `isConverting` and keeps the machine awake until one of
/// three ends, each of which clears them. `videoProgress` moves forward only, once a percent.
class VideoJob : public std::enable_shared_from_this<VideoJob> {
public:
    /// `model` must be what owns this. Ports without those of videos are a broken invariant.
    VideoJob(const DetailPorts& ports, std::weak_ptr<DetailViewModel> model);

    /// Encodes the source video by the selected style, whose preview must be there, except for
    /// `rapidHQ`, which has none. Nothing happens without it or while a job runs. A model without
    /// `originalVideoUrl` is a broken invariant.
    void startVideoSave();

    /// The only cancel. Nothing happens while no job runs.
    void cancel();

private:
    void refuse(DetailViewModel& model, const char* messageKey);
    void setHandlers(const std::filesystem::path& outputUrl);
    void startScaling(DetailViewModel& model, const AVAssetRef& asset,
                      const std::filesystem::path& outputUrl, Size natural);

    /// On either of the processor's queues.
    void progressed(float progress);
    /// On the thread that ends the job.
    void completed(const std::optional<Error>& error, const std::filesystem::path& outputUrl);

    void videoSaveSucceeded(const std::filesystem::path& url);
    void videoSaveCanceled();
    void videoSaveFailed(const Error& error);
    void log(DetailViewModel& model, std::string_view event) const;
    void showError(DetailViewModel& model, std::string message) const;

    DetailPorts ports_;
    DetailPorts::Video video_;
    std::weak_ptr<DetailViewModel> model_;
    const std::shared_ptr<VideoProcessor> videoProcessor_;
    std::mutex progressMutex_;
    std::atomic<int> currentProgress_ = 0;  // the last percent that was shown
};

}  // namespace quillmere
