// The store's question for a review.
#pragma once

#include "Platform/Application/UIApplication.h"

namespace quillmere {

/// Main thread. The platform may ignore the request.
class SKStoreReviewController {
public:
    virtual ~SKStoreReviewController() = default;

    virtual void requestReviewInScene(UIWindowScene& scene) = 0;
};

}  // namespace quillmere
