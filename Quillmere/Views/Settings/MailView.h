// The mail composer of the settings.
#pragma once

#include <optional>

#include "Base/Published.h"
#include "Base/Result.h"
#include "Platform/Application/UIDevice.h"
#include "Platform/Localization/Localization.h"
#include "Platform/Sharing/MFMailComposeViewController.h"
#include "Quillmere/Models/Services/ProjectSettings.h"

namespace quillmere {

/// Main thread. Its two fields have to live until the composer's end.
class MailView {
public:
    using End = std::optional<Result<MFMailComposeResult>>;

    struct Ports {
        MFMailComposeViewController& mail;
        const UIDevice& device;
        const Localization& localization;
        const ProjectSettings& settings;
    };

    MailView(const Ports& ports, Published<bool>& isShowing, Published<End>& result)
        : ports_(ports), isShowing_(isShowing), result_(result) {}

    /// To support, with room for the user's words above the facts of the machine.
    void present() {
        const std::string subject =
            "Inquiry About " + ports_.localization.localizedString("AppName");
        const std::string facts = ports_.device.name() + "\n" + ports_.device.systemVersion();
        ports_.mail.compose(
            {ports_.settings.supportAddress, subject, "\n\n" + facts},
            [&isShowing = isShowing_, &result = result_](const Result<MFMailComposeResult>& end) {
                result.set(end);
                isShowing.set(false);
            });
    }

private:
    Ports ports_;
    Published<bool>& isShowing_;
    Published<End>& result_;
};

}  // namespace quillmere
