// What the logic of the detail screen asks of the platform and of the application.
#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "Platform/AVFoundation/AVFoundation.h"
#include "Platform/Analytics/Analytics.h"
#include "Platform/Application/Device.h"
#include "Platform/Application/SKStoreReviewController.h"
#include "Platform/Application/UIApplication.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Graphics/Graphics.h"
#include "Platform/ImageIO/ImageIO.h"
#include "Platform/Localization/Localization.h"
#include "Platform/Photos/PHPhotoLibrary.h"
#include "Platform/UserDefaults/UserDefaults.h"
#include "Quillmere/Ads/DetailAds.h"
#include "Quillmere/Models/Enhance/TileEngine.h"
#include "Quillmere/Models/Services/ImageMetadataHelper.h"

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

    /// `enhanceImage` of the tile engine.
    std::function<void(EnhanceStyle, const UIImage&, const TileEngine::Progress&,
                       const TileEngine::Completion&)>
        enhanceImage;
    /// The factor by which a video of that size is enlarged in one pass; nothing where it can't be.
    std::function<std::optional<int>(double width, double height)> resolveSuperResolutionFactor;
};

}  // namespace quillmere
