// What the user allows the ad library, and the form that asks.
#pragma once

#include <functional>
#include <optional>

#include "Base/Error.h"
#include "Platform/Application/UIApplication.h"

namespace quillmere {

struct UMPRequestParameters {
    bool tagForUnderAgeOfConsent = false;
};

using UMPConsentHandler = std::function<void(const std::optional<Error>& error)>;

class UMPConsentInformation {
public:
    virtual ~UMPConsentInformation() = default;

    /// Refreshes what is known; main thread. Returns at once. The handler runs once, on the main
    /// thread, since it looks at windows, and never inside this call.
    virtual void requestConsentInfoUpdateWithParameters(const UMPRequestParameters& parameters,
                                                        UMPConsentHandler completionHandler) = 0;

    /// By the state known so far, that of an earlier run included. Any thread.
    virtual bool canRequestAds() const = 0;
};

class UMPConsentForm {
public:
    virtual ~UMPConsentForm() = default;

    /// Shows the form over `controller` if the user has still to be asked; main thread. Returns at
    /// once. The handler runs once, on any thread and never inside this call, when the form has
    /// gone or is not needed.
    virtual void loadAndPresentIfRequiredFromViewController(
        UIViewController& controller, UMPConsentHandler completionHandler) = 0;
};

}  // namespace quillmere
