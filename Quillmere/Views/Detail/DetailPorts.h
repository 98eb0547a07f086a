// What the logic of the detail screen asks of the platform and of the application.
#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "Base/NotificationCenter.h"
#include "Platform/AVFoundation/AVFoundation.h"
#include "Platform/Analytics/Analytics.h"
#include "Platform/Application/Console.h"
#include "Platform/Application/Device.h"
#include "Platform/Application/SKStoreReviewController.h"
#include "Platform/Application/UIApplication.h"
#include "Platform/AudioToolbox/AudioToolbox.h"
#include "Platform/CoreImage/CoreImage.h"
#include "Platform/CrashLog/CrashLog.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/FileManager/FileManager.h"
#include "Platform/Graphics/Graphics.h"
#include "Platform/ImageIO/ImageIO.h"
#include "Platform/Localization/Localization.h"
#include "Platform/Photos/PHPhotoLibrary.h"
#include "Platform/UserDefaults/UserDefaults.h"
#include "Platform/VideoToolbox/VideoToolbox.h"
#include "Quillmere/Ads/DetailAds.h"
#include "Quillmere/Models/Enhance/TileEngine.h"
#include "Quillmere/Models/Services/ImageMetadataHelper.h"
#include "Quillmere/Models/Video/VideoFileManager.h"

namespace quillmere {

/// All of it outlives the work that the screen starts. Copied freely.
struct DetailPorts {
    Dispatch& dispatch;
    Analytics& analytics;
    const Localization& localization;
    UserDefaults& userDefaults;
    Graphics& graphics;
    ImageIO& imageIO;
    ImageMetadataHelper::Platform metadata;
    PHPhotoLibrary& photoLibrary;
    AVFoundation& avFoundation;
    const Device& device;
    UIApplication& application;
    SKStoreReviewController& storeReview;
    std::shared_ptr<DetailAds> ads;  // the screen's own

    EnhanceImage enhanceImage;
    /// The factor by which a video of that size is enlarged in one pass; nothing where it can't be.
    std::function<std::optional<int>(double width, double height)> resolveSuperResolutionFactor;

    /// What videos need beside the rest.
    struct Video {
        AudioToolbox& audioToolbox;
        VideoToolbox& videoToolbox;
        CoreImage& coreImage;
        FileManager& fileManager;
        CrashLog& crashLog;
        Console& console;
        NotificationCenter& notificationCenter;
        /// The process's one rendering context.
        std::function<CIContext&()> sharedCIContext;
        VideoFileManager& files;
    };
    /// Nothing in a program that opens no videos.
    std::optional<Video> video = std::nullopt;
};

}  // namespace quillmere
