#pragma once

#include <string>
#include <utility>

#include "Platform/Consent/Consent.h"
#include "Tests/Fakes/CallLog.h"

namespace quillmere {

/// Keeps what it is asked until the test answers by calling the handler.
class FakeConsent final : public UMPConsentInformation, public UMPConsentForm {
public:
    explicit FakeConsent(CallLog& log) : log_(log) {}

    bool adsAllowed = false;
    UMPConsentHandler updateHandler;
    UMPConsentHandler formHandler;
    UIViewController* formShownOver = nullptr;

    void requestConsentInfoUpdateWithParameters(const UMPRequestParameters& parameters,
                                                UMPConsentHandler completionHandler) override {
        log_.record(std::string("update consent, under age ") +
                    (parameters.tagForUnderAgeOfConsent ? "yes" : "no"));
        updateHandler = std::move(completionHandler);
    }

    bool canRequestAds() const override {
        log_.record("canRequestAds");
        return adsAllowed;
    }

    void loadAndPresentIfRequiredFromViewController(UIViewController& controller,
                                                    UMPConsentHandler completionHandler) override {
        log_.record("consent form");
        formShownOver = &controller;
        formHandler = std::move(completionHandler);
    }

private:
    CallLog& log_;
};

}  // namespace quillmere
