// The inquiry form: a user's own words in one request to a server of the maker's.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Base/Published.h"
#include "Platform/Application/UIAlertController.h"
#include "Platform/Application/UIApplication.h"
#include "Platform/CrashLog/CrashLog.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Localization/Localization.h"
#include "Platform/URLSession/URLSession.h"
#include "Quillmere/Models/Services/ProjectSettings.h"
#include "Quillmere/Views/Common/AlertTypes.h"

namespace quillmere {

/// Lives by shared pointers, as the answer may come when the form has closed. Main thread, except
/// that `alert` is written on the session's.
class ReportFormView : public std::enable_shared_from_this<ReportFormView> {
public:
    struct Ports {
        Dispatch& dispatch;
        URLSession& session;
        const Localization& localization;
        const UIApplication& application;
        UIAlertController& alerts;
        CrashLog& crashLog;
        const ProjectSettings& settings;
    };

    explicit ReportFormView(const Ports& ports) : ports_(ports) {}

    Published<std::string> text;
    Published<std::optional<AlertTypes>> alert;
    /// A request is under way: the content is held.
    Published<bool> isLoading{false};
    Published<bool> promptFieldIsFocused{false};
    /// Set when the user has confirmed that the text was sent: the form is to close.
    Published<bool> dismissed{false};

    bool canSend() const { return !text.get().empty(); }
    /// Half a second later, when the keyboard is down, the text goes out. It stays after a failure.
    void sendTapped();

private:
    void send();
    /// On the session's thread.
    void answered(const Result<URLAnswer>& answer);
    void showError(const std::string& message);

    Ports ports_;
};

/// With each byte that may not stand in a query as "%" and two digits. "&", "=" and "+" may, and
/// stay as they are.
std::string percentEncodedQuery(std::string_view text);

}  // namespace quillmere
