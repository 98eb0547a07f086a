#include "Quillmere/Views/Settings/ReportFormView.h"

#include <chrono>
#include <utility>

#include "Quillmere/Models/Services/LocalizedReason.h"
#include "Quillmere/Views/Common/TopViewController.h"

namespace quillmere {
namespace {

constexpr std::chrono::milliseconds keyboardDelay{500};
constexpr std::chrono::seconds timeout{60};
constexpr int success = 200;

/// RFC 3986: what a query may hold as it is.
bool mayStandInQuery(char c) {
    const bool isAlphanumeric =
        (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
    return isAlphanumeric ||
           std::string_view("-._~!$&'()*+,;=:@/?").find(c) != std::string_view::npos;
}

}  // namespace

std::string percentEncodedQuery(std::string_view text) {
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string encoded;
    for (const char c : text) {
        if (mayStandInQuery(c)) {
            encoded += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            encoded += {'%', digits[byte >> 4], digits[byte & 15]};
        }
    }
    return encoded;
}

void ReportFormView::sendTapped() {
    promptFieldIsFocused.set(false);
    ports_.dispatch.mainQueue().asyncAfter(keyboardDelay,
                                           [self = shared_from_this()] { self->send(); });
}

void ReportFormView::send() {
    URLRequest request;
    request.url = ports_.settings.inquiryEndpoint +
                  "/prod/appinquiry?title=" + percentEncodedQuery(ports_.settings.inquiryTitle) +
                  "&desc=" + percentEncodedQuery(text.get());
    request.httpMethod = "POST";
    request.timeoutInterval = timeout;
    request.allHTTPHeaderFields = {{"x-api-key", ports_.settings.inquiryKey}};
    isLoading.set(true);
    const auto task = ports_.session.dataTaskWithRequest(
        std::move(request),
        [self = shared_from_this()](const Result<URLAnswer>& answer) { self->answered(answer); });
    task->resume();
}

void ReportFormView::answered(const Result<URLAnswer>& answer) {
    ports_.dispatch.mainQueue().async([self = shared_from_this()] { self->isLoading.set(false); });
    if (!answer) return showError(localizedReason(answer.error(), ports_.localization));
    if (!answer->response) return;
    const int status = answer->response->statusCode;
    if (status != success) return showError("error code: " + std::to_string(status));
    ports_.dispatch.mainQueue().async([self = shared_from_this()] {
        UIViewController* top = topViewController(self->ports_.application, self->ports_.crashLog);
        if (!top) return;
        const Localization& localization = self->ports_.localization;
        self->ports_.alerts.present(
            localization.localizedString("SuccessToInquiry"),
            localization.localizedString("SuccessToInquiryMessage"), "OK",
            [self] { self->dismissed.set(true); }, *top);
    });
}

void ReportFormView::showError(const std::string& message) {
    alert.set(AlertTypes::defaultButton(ports_.localization.localizedString("Error"), message));
}

}  // namespace quillmere
