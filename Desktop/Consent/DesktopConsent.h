// What the user allows the ad library, kept in a file of the user's own.
#pragma once

#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>

#include "Platform/Consent/Consent.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/FileManager/FileManager.h"

namespace quillmere {

/// No network: what is known is what the user once answered here, in "Consent" in `folder`. An
/// edition without ads has nothing to ask, and lets its library have its way. Handlers run on the
/// main queue.
class DesktopConsent final : public UMPConsentInformation, public UMPConsentForm {
public:
    /// Asks over that controller whether ads may be requested, and calls back once, on the main
    /// thread.
    using AskUser = std::function<void(UIViewController& over, std::function<void(bool)> answered)>;

    /// Without a folder, for a user without a home, an answer holds for this process alone.
    DesktopConsent(Dispatch& dispatch, FileManager& fileManager,
                   std::optional<std::filesystem::path> folder, bool editionHasAds);

    /// To be set before the form is first needed. Without it the form can't be shown: an error.
    void setAskUser(AskUser askUser) { askUser_ = std::move(askUser); }

    /// Reads the file again. An error where it says neither yes nor no, or can't be read.
    void requestConsentInfoUpdateWithParameters(const UMPRequestParameters& parameters,
                                                UMPConsentHandler completionHandler) override;
    bool canRequestAds() const override;

    /// Needed until the user has answered. An answer that can't be kept holds for this process,
    /// and is an error.
    void loadAndPresentIfRequiredFromViewController(UIViewController& controller,
                                                    UMPConsentHandler completionHandler) override;

private:
    std::optional<Error> readAnswer();
    std::optional<Error> keepAnswer(bool allowed);

    Dispatch& dispatch_;
    FileManager& fileManager_;
    const std::optional<std::filesystem::path> folder_;
    const bool editionHasAds_;
    AskUser askUser_;
    mutable std::mutex mutex_;
    std::optional<bool> answer_;
};

}  // namespace quillmere
