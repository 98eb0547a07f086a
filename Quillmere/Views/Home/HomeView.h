// The first screen: every way in, and what goes on to the detail screen.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string_view>
#include <vector>

#include "Base/NotificationCenter.h"
#include "Base/Published.h"
#include "Base/UniformRandom.h"
#include "Platform/AVFoundation/AVFoundation.h"
#include "Platform/Analytics/Analytics.h"
#include "Platform/Application/Bundle.h"
#include "Platform/Application/Console.h"
#include "Platform/Application/UIApplication.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/FileManager/FileManager.h"
#include "Platform/ImageIO/ImageIO.h"
#include "Platform/Localization/Localization.h"
#include "Platform/Photos/PHPickerResult.h"
#include "Platform/Sharing/UIActivityViewController.h"
#include "Platform/UserDefaults/UserDefaults.h"
#include "Quillmere/Models/Services/MoreApp.h"
#include "Quillmere/Models/Video/VideoFileManager.h"
#include "Quillmere/Views/Common/AlertTypes.h"
#include "Quillmere/Views/Home/HomeViewModel.h"

namespace quillmere {

/// Main thread, but for the fields that pickers write from threads of their own: `tmpInputImage`
/// and `pickerResults`. What follows from a change of a field comes on the main queue. Lives until
/// the end of the process.
class HomeView {
public:
    struct Ports {
        Dispatch& dispatch;
        UserDefaults& userDefaults;
        Analytics& analytics;
        const Localization& localization;
        const Bundles& bundles;
        FileManager& fileManager;
        ImageIO& imageIO;
        AVFoundation& avFoundation;
        UIApplication& application;
        UIActivityViewController& activities;
        NotificationCenter& notificationCenter;
        VideoFileManager& videoFiles;
        Console& console;
        const ProjectSettings& settings;
        RandomSource random = systemRandom;
    };

    /// A built-in picture, and the key of the button that opens it.
    struct Sample {
        const char* key;
        const char* resource;  // a PNG file
    };
    static constexpr Sample illustration{"SampleIllustration", "sample_illustration_resized2"};
    static constexpr Sample photo{"SamplePhoto", "sample_photo_resized3"};

    explicit HomeView(const Ports& ports);
    HomeView(const HomeView&) = delete;
    HomeView& operator=(const HomeView&) = delete;

    HomeViewModel vm;
    Published<bool> showingImagePicker{false};
    Published<bool> showingDocumentPicker{false};
    Published<bool> showingVideoPicker{false};
    /// What goes to the detail screen: a picture, a cropped one, or a video's first frame. Setting
    /// it to one opens that screen, and nothing else does.
    Published<std::optional<UIImage>> inputImage;
    /// Of the last pick in the library; nothing after a pick of a file.
    Published<std::optional<std::vector<PHPickerResult>>> pickerResults;
    /// What a picker delivered, before it is known whether it will be cropped.
    Published<std::optional<UIImage>> tmpInputImage;
    Published<std::optional<std::filesystem::path>> inputVideoUrl;
    Published<bool> isShowingDetailView{false};
    /// The cropper covers the screen.
    Published<bool> showImageCropper{false};
    Published<std::optional<AlertTypes>> alert;
    /// The library picker is to take several pictures.
    Published<bool> selectMultiple{false};
    /// Into `allMoreApps`.
    Published<std::size_t> moreAppsRandomIndex{0};

    /// At each appearance, also on the way back from the detail screen.
    void appear();

    /// Whether the row of the maker's other applications is seen on a screen of that height in
    /// points: on none of at most 800, and not before the fourth saved picture.
    bool showsMoreApps(double screenHeight) const;
    void moreAppTapped();

    void sampleTapped(const Sample& sample);
    void selectFromLibraryTapped();
    void selectMultipleFromLibraryTapped();
    void selectFromFilesTapped();
    void selectVideoTapped();
    void cropRowTapped() { vm.toggleCrop(); }
    void settingsTapped() { vm.showSettings.set(true); }
    void shareToFriendsTapped();

    /// The cropper's end with a picture. Cancelling it only closes it.
    void cropped(const UIImage& image);

private:
    void openSample(const char* resource);
    void inputPicked();
    void videoPicked();

    Ports ports_;
    std::vector<Subscription> reactions_;
};

}  // namespace quillmere
