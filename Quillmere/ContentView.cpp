#include "Quillmere/ContentView.h"

#include "Quillmere/Views/Common/TopViewController.h"

namespace quillmere {

void ContentView::setupOnce() {
    if (hasSetup_) return;
    hasSetup_ = true;

    UMPRequestParameters parameters;
    parameters.tagForUnderAgeOfConsent = false;
    ports_.consentInformation.requestConsentInfoUpdateWithParameters(
        parameters, [this](const std::optional<Error>& error) { consentUpdated(error); });
    // Consent of an earlier run holds without waiting for the refresh.
    if (ports_.consentInformation.canRequestAds()) startMobileAds();
}

void ContentView::consentUpdated(const std::optional<Error>& error) {
    if (error) return startDespite(*error);
    UIViewController* top = topViewController(ports_.application, ports_.crashLog);
    if (!top) return startMobileAds();
    ports_.consentForm.loadAndPresentIfRequiredFromViewController(
        *top, [this](const std::optional<Error>& failure) { formEnded(failure); });
}

void ContentView::formEnded(const std::optional<Error>& error) {
    if (error) return startDespite(*error);
    if (ports_.consentInformation.canRequestAds()) startMobileAds();
}

void ContentView::startDespite(const Error& error) {
    startMobileAds();
    ports_.console.print("Error: " + error.localizedDescription);
}

void ContentView::startMobileAds() {
    ports_.dispatch.mainQueue().async([this] {
        if (isMobileAdsStartCalled_) return;
        isMobileAdsStartCalled_ = true;
        ports_.mobileAds.setTestDeviceIdentifiers(testDeviceIdentifiers_);
        ports_.mobileAds.startWithCompletionHandler([this] {
            const auto appOpenAds = ports_.appOpenAds.get();
            appOpenAds->setHasStartCompleted(true);
            appOpenAds->loadAd();
            ports_.interstitialAds.get()->loadAd();
        });
    });
}

}  // namespace quillmere
