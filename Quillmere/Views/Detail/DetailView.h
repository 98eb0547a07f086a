// The detail screen: source and result side by side, the styles, and what belongs to which state.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Base/Published.h"
#include "Quillmere/Models/Enhance/StyleRows.h"
#include "Quillmere/Models/Services/UserDefaultsHelper.h"
#include "Quillmere/Views/Detail/DetailViewModel.h"

namespace quillmere {

/// What the screen is opened with. `image` is the source; of a video, its first frame.
struct DetailInput {
    UIImage image;
    std::optional<std::filesystem::path> videoUrl;
    std::optional<std::vector<PHPickerResult>> pickerResults;
};

/// Lives for as long as the screen stays on the navigation stack. Main thread. Texts come in the
/// user's language.
class DetailView {
public:
    DetailView(const DetailPorts& ports, const VideoToolbox& videoToolbox, DetailInput input);
    DetailView(const DetailView&) = delete;
    DetailView& operator=(const DetailView&) = delete;
    ~DetailView() { vm_->abandonWork(); }

    DetailViewModel& vm() const { return *vm_; }

    Published<bool> showBannerAds{false};
    Published<bool> showingSettingsView{false};
    /// The longest side that a style's working picture may have, in pixels.
    Published<double> sizeLimit;
    /// The share of the width, from the leading edge, on which the source is seen: 0 to 1.
    Published<double> sliderPosition{0.5};
    Published<bool> showingImageFormatSelection{false};
    Published<UserDefaultsHelper::ImageFormat> currentImageFormat;
    /// Of the progress display, which is seen while there is one. Written where `videoProgress` is.
    Published<std::optional<float>> progressDisplay;
    /// Whether work is to be stopped, while that is asked; gone when the work ends by itself.
    Published<std::optional<AlertTypes>> question;
    /// The user has said yes; a batch or a video job ends after the picture or the frame in work.
    Published<bool> isStopping{false};

    /// Every time, also on the way back from the preview; only the first one takes the input.
    void appear();
    void disappear() { progressDisplay.set(std::nullopt); }

    /// Whether the video preview is to be on the stack.
    bool showsVideoPreview() const;

    /// What covers the screen, with the content held beneath.
    enum class Cover { none, conversion, loading };
    Cover cover() const;
    std::string loadingTitle() const;
    /// What stands beneath the progress display, from the top: which picture of a batch it is, what
    /// holds it, or that it is stopping.
    std::vector<std::string> progressLines() const;

    /// A tap on the button that ends a batch or a video job; the user is asked first.
    void stopTapped();
    /// Whether work is under way that going on would end. The user is asked then, once, and `goOn`
    /// follows a yes; otherwise the caller goes on by itself.
    bool asksFirst(std::function<void()> goOn);

    /// Of the selected style.
    std::optional<UIImage> result() const;
    /// What stands in the place of a result that isn't there, from the top.
    std::vector<std::string> linesWithoutResult() const;

    // Notices beneath the result, from the top.
    bool showsVideoNotice() const { return isVideo(); }
    /// Where the source is larger than the limit; goes with a button to the settings.
    std::optional<std::string> tooBigNotice() const;
    /// "451 x 300", cut to whole numbers.
    std::string sourceSize() const;
    std::string resultSize() const;

    /// The least way of a finger that moves the divider, in points.
    static constexpr double minimumDragDistance = 10;
    /// The divider has been dragged to `x` on an area that is `width` points wide.
    void dragDivider(double x, double width, bool rightToLeft);

    struct StyleButton {
        EnhanceStyle style;
        std::string text;
        StyleLabelColor color;
        bool isSelected;
    };
    std::vector<std::vector<StyleButton>> styleButtons() const;
    void styleTapped(EnhanceStyle style);

    bool isVideo() const { return input_.videoUrl.has_value(); }
    /// Pictures have a format to choose, videos don't.
    bool showsFormatButton() const { return !isVideo(); }
    const char* formatName() const;
    void formatTapped() { showingImageFormatSelection.set(true); }
    /// "Save" or "Convert".
    const char* mainButtonKey() const { return isVideo() ? "Convert" : "Save"; }
    void mainButtonTapped();

    /// The button beside the notice of a source that is too big.
    void resolutionLimitTapped() { showingSettingsView.set(true); }
    /// A tap on the black around the share screen.
    void shareBackgroundTapped() { vm_->isShowShare.set(!vm_->isShowShare.get()); }
    bool showsShareView() const { return vm_->isShowShare.get() && result().has_value(); }
    void screenshotTaken();

private:
    void limitMayHaveChanged();
    void showProgress(float progress);
    std::string placeOf(const DetailViewModel::BatchPicture& picture) const;
    std::string nameOf(const DetailViewModel::BatchPicture& picture) const;
    std::string text(const char* key) const { return ports_.localization.localizedString(key); }

    DetailPorts ports_;
    const VideoToolbox& videoToolbox_;
    const DetailInput input_;
    std::shared_ptr<DetailViewModel> vm_;
    std::vector<Subscription> reactions_;
};

}  // namespace quillmere
