// The state of the detail screen: what the user opened, and what became of it.
#pragma once

#include <array>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Base/Geometry.h"
#include "Base/Published.h"
#include "Quillmere/Views/Common/AlertTypes.h"
#include "Quillmere/Views/Detail/DetailPorts.h"
#include "Quillmere/Views/Detail/KeptMetadata.h"

namespace quillmere {

class BatchSave;
class VideoJob;

/// Why `rapidHQ` can't enlarge a video: its size, and the largest that could be. In pixels.
struct RapidHQSizeLimits {
    double sourceWidth;
    double sourceHeight;
    double limitWidth;
    double limitHeight;
};

/// The logic of the screen, which needs no screen. It lives by shared pointers: work that is under
/// way keeps it, or finds it gone.
///
/// Fields belong to the main thread, except where an operation says otherwise.
class DetailViewModel : public std::enable_shared_from_this<DetailViewModel> {
public:
    using Images = std::array<std::optional<UIImage>, allEnhanceStyles.size()>;

    struct BatchPicture {
        std::string name;    // of its file; empty where it is none
        std::size_t number;  // from 1
        std::size_t count;   // of the batch
        bool isHeld;         // nothing more will come of it, and the others wait for it
    };

    explicit DetailViewModel(const DetailPorts& ports);
    ~DetailViewModel();

    /// The alert to show; setting it shows it.
    Published<std::optional<AlertTypes>> alert;
    /// A result for each style, by its raw value. The slot of `original` holds the source, that of
    /// `rapidHQ` nothing.
    Published<Images> convertedImages;
    Published<EnhanceStyle> selectedStyle{EnhanceStyle::original};
    Published<bool> isShowShare{false};
    /// A conversion, a batch or a video job is running.
    Published<bool> isConverting{false};
    Published<bool> isShowingVideoPreview{false};
    /// A batch or a video job is running.
    Published<bool> isVideoProcessing{false};
    /// Of a batch or a video job: 0 to 1, and -1 after its end. A batch writes it from a worker
    /// too.
    Published<float> videoProgress{0};
    /// Of a conversion: 0 to 1.
    Published<float> imageConversionProgress{0};
    /// In pixels, where it is known.
    Published<std::optional<Size>> rapidHQExpectedSize;
    /// Of a batch, the one whose turn it is.
    Published<std::optional<BatchPicture>> batchPicture;

    /// The source; of a video, its preview picture.
    std::optional<UIImage> originalImage;
    std::optional<std::filesystem::path> originalVideoUrl;
    std::optional<Size> originalVideoSize;  // in pixels
    /// The result of the last good video job; gone when work files are cleared.
    std::optional<std::filesystem::path> outputVideoUrl;
    /// More than one means a batch.
    std::optional<std::vector<PHPickerResult>> pickerResults;
    /// Date and place of the first picked asset, whether or not they are to be kept.
    std::optional<OriginalMetadata> originalMetadata;

    /// Takes what the user opened.
    void prepare(const UIImage& picture, std::optional<std::filesystem::path> videoUrl,
                 std::optional<std::vector<PHPickerResult>> results);

    /// After the choice of a style: makes its result, unless it is there already. Does not look
    /// at `isConverting`: a run that has failed may still be under way.
    void convert();

    /// The stored resolution limit has changed, under which every result was made. The selection
    /// stays.
    void resetConvertedImages();

    bool hasConvertedImage() const;

    void refreshRapidHQExpectedSize();

    /// For a video that `rapidHQ` is selected for and can't enlarge; nothing otherwise.
    std::optional<RapidHQSizeLimits> rapidHQSizeLimits();

    /// The end of a run. The picture goes to the style that is selected now, which is not that of
    /// the start where a failure has freed the screen meanwhile. Neither picture nor text is a
    /// silent end.
    void finishConversion(const std::optional<UIImage>& picture,
                          const std::optional<std::string>& text);

    /// Saves the result of the selected style as a new asset; nothing happens without one.
    void saveImage();
    void imageSaved(bool success, const std::optional<Error>& error);

    /// Converts and saves every picked picture by the selected style, one after the other. An item
    /// that can't be loaded in any way, and a run that ends silently, hold the batch until it is
    /// stopped.
    void saveImages();

    /// Encodes the video anew by the selected style; `VideoJob` tells of its ends. The
    /// notification `cancelSaveVideo` cancels it. Without ports of videos it is a broken invariant.
    void startVideoSave();

    /// The user wants no more of a batch or a video job, which ends after the picture or the frame
    /// in work, by its usual end.
    void stopWork();

    /// The screen has gone: nothing keeps the machine awake, or waits, for what still runs.
    void abandonWork();

private:
    friend class BatchSave;

    void showError(const std::string& message);
    void setSlot(EnhanceStyle style, std::optional<UIImage> picture);
    std::optional<Size> sizeOfVideo();

    DetailPorts ports_;
    std::shared_ptr<VideoJob> videoJob_;  // from the first one on
    std::weak_ptr<BatchSave> batch_;      // the last one
    Subscription cancelSaveVideo_;
};

}  // namespace quillmere
