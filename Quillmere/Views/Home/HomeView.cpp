#include "Quillmere/Views/Home/HomeView.h"

#include <chrono>
#include <string>
#include <utility>

#include "Base/Invariant.h"
#include "Quillmere/Models/Services/AnalyticsEvents.h"
#include "Quillmere/Models/Services/Notifications.h"
#include "Quillmere/Models/Services/PreferenceKeys.h"
#include "Quillmere/Models/Services/Windows.h"
#include "Quillmere/Views/Common/ShareToFriends.h"

namespace quillmere {
namespace {

constexpr double heightWithoutMoreApps = 800;  // points
constexpr std::int64_t savesBeforeMoreApps = 4;
// Long enough for a picture that is set to nothing to be seen as a change.
constexpr std::chrono::milliseconds sampleDelay{10};

}  // namespace

HomeView::HomeView(const Ports& ports) : vm(ports.userDefaults), ports_(ports) {
    const auto onMain = [this](void (HomeView::*reaction)()) {
        ports_.dispatch.mainQueue().async([this, reaction] { (this->*reaction)(); });
    };
    reactions_.push_back(tmpInputImage.subscribe([=](const std::optional<UIImage>& image) {
        if (image) onMain(&HomeView::inputPicked);
    }));
    reactions_.push_back(inputVideoUrl.subscribe([=](const auto& url) {
        if (url) onMain(&HomeView::videoPicked);
    }));
    reactions_.push_back(inputImage.subscribe([this](const std::optional<UIImage>& image) {
        if (!image) return;
        ports_.dispatch.mainQueue().async([this] { isShowingDetailView.set(true); });
    }));
    reactions_.push_back(showingVideoPicker.subscribe([this](bool showing) {
        if (!showing) vm.isLoading.set(false);
    }));
}

void HomeView::appear() {
    vm.refresh();
    ports_.notificationCenter.post(cancelSaveVideo);
    ports_.videoFiles.clearTemporaryVideos();
    moreAppsRandomIndex.set(uniformBelow(allMoreApps.size(), ports_.random));
}

bool HomeView::showsMoreApps(double screenHeight) const {
    return screenHeight > heightWithoutMoreApps &&
           ports_.userDefaults.integerForKey(reviewCountKey) >= savesBeforeMoreApps;
}

void HomeView::moreAppTapped() {
    const std::size_t index = moreAppsRandomIndex.get();
    ports_.analytics.logEventWithName(eventName("MoreAppAtHome2"),
                                      AnalyticsParameters{{"AppIndex", std::to_string(index)}});
    if (const auto page = storePageOf(allMoreApps.at(index), ports_.settings)) {
        ports_.application.openURL(*page, {});
    }
}

void HomeView::sampleTapped(const Sample& sample) {
    inputImage.set(std::nullopt);
    inputVideoUrl.set(std::nullopt);
    selectMultiple.set(false);
    ports_.dispatch.mainQueue().asyncAfter(
        sampleDelay, [this, resource = sample.resource] { openSample(resource); });
}

void HomeView::openSample(const char* resource) {
    const auto file = ports_.bundles.bundleForClass("HomeView").urlForResource(resource, "png");
    if (!file) invariantBroken();
    const auto data = ports_.fileManager.contentsOfFile(*file);
    if (!data) invariantBroken();
    const auto image = ports_.imageIO.imageWithData(*data);
    if (!image) invariantBroken();
    inputImage.set(*image);
}

void HomeView::selectFromLibraryTapped() {
    selectMultiple.set(false);
    showingImagePicker.set(true);
}

void HomeView::selectMultipleFromLibraryTapped() {
    selectMultiple.set(true);
    showingImagePicker.set(true);
}

void HomeView::selectFromFilesTapped() { showingDocumentPicker.set(true); }

void HomeView::selectVideoTapped() {
    showingVideoPicker.set(true);
    vm.isLoading.set(true);
}

void HomeView::inputPicked() {
    const auto picked = tmpInputImage.get();
    if (!picked) return;
    inputVideoUrl.set(std::nullopt);
    const auto results = pickerResults.get();
    const bool isOne = !results || results->size() < 2;
    if (isOne && ports_.userDefaults.boolForKey(enableCropKey)) {
        showImageCropper.set(true);
        return;
    }
    inputImage.set(picked);
}

void HomeView::cropped(const UIImage& image) {
    tmpInputImage.set(std::nullopt);
    inputImage.set(image);
}

void HomeView::videoPicked() {
    const auto url = inputVideoUrl.get();
    if (!url) return;
    vm.isLoading.set(true);
    const auto generator =
        ports_.avFoundation.assetImageGeneratorWithAsset(ports_.avFoundation.assetWithURL(*url));
    generator->setAppliesPreferredTrackTransform(true);
    generator->generateCGImagesAsynchronouslyForTimes(
        {MediaTime::zero()}, [this](MediaTime, const Result<CGImage>& frame) {
            if (frame) {
                ports_.dispatch.mainQueue().async(
                    [this, image = UIImage(*frame)] { inputImage.set(image); });
            } else {
                ports_.console.print(frame.error().localizedDescription);
            }
            ports_.dispatch.mainQueue().async([this] { vm.isLoading.set(false); });
        });
}

void HomeView::shareToFriendsTapped() {
    ports_.analytics.logEventWithName(eventName("home_shareApp"), std::nullopt);
    UIViewController* root = rootOfFirstWindow(ports_.application);
    if (root) {
        ports_.activities.present({invitation(ports_.localization, ports_.settings)}, *root);
    }
}

}  // namespace quillmere
