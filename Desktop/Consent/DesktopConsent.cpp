#include "Desktop/Consent/DesktopConsent.h"

#include <cerrno>
#include <span>
#include <string>
#include <string_view>

#include "Desktop/FileManager/UserFolders.h"

namespace quillmere {
namespace {

constexpr const char* fileName = "Consent";
constexpr std::string_view allowedLine = "ads allowed\n";
constexpr std::string_view refusedLine = "ads refused\n";

Error failure(std::string sentence, std::vector<std::string> values = {}) {
    return {"quillmere.consent", 1, std::move(sentence), std::move(values)};
}

}  // namespace

DesktopConsent::DesktopConsent(Dispatch& dispatch, FileManager& fileManager,
                               std::optional<std::filesystem::path> folder, bool editionHasAds)
    : dispatch_(dispatch),
      fileManager_(fileManager),
      folder_(std::move(folder)),
      editionHasAds_(editionHasAds) {
    if (editionHasAds_) readAnswer();  // an error is told by the first update
}

void DesktopConsent::requestConsentInfoUpdateWithParameters(const UMPRequestParameters&,
                                                            UMPConsentHandler completionHandler) {
    const auto error = editionHasAds_ ? readAnswer() : std::nullopt;
    dispatch_.mainQueue().async(
        [error, handler = std::move(completionHandler)] { handler(error); });
}

bool DesktopConsent::canRequestAds() const {
    const std::lock_guard lock(mutex_);
    return !editionHasAds_ || answer_.value_or(false);
}

void DesktopConsent::loadAndPresentIfRequiredFromViewController(
    UIViewController& controller, UMPConsentHandler completionHandler) {
    const auto end = [this, handler = std::move(completionHandler)](std::optional<Error> error) {
        dispatch_.mainQueue().async([handler, error = std::move(error)] { handler(error); });
    };
    {
        const std::lock_guard lock(mutex_);
        if (!editionHasAds_ || answer_) return end(std::nullopt);
    }
    if (!askUser_) return end(failure("There is no window to ask for consent in."));
    askUser_(controller, [this, end](bool allowed) { end(keepAnswer(allowed)); });
}

std::optional<Error> DesktopConsent::readAnswer() {
    if (!folder_) return std::nullopt;
    const auto contents = fileManager_.contentsOfFile(*folder_ / fileName);
    if (!contents) {
        if (contents.error().code == ENOENT) return std::nullopt;
        return contents.error();
    }
    const std::string_view line(reinterpret_cast<const char*>(contents->data()), contents->size());
    if (line != allowedLine && line != refusedLine) {
        return failure("%@ is damaged.", {(*folder_ / fileName).string()});
    }
    const std::lock_guard lock(mutex_);
    answer_ = line == allowedLine;
    return std::nullopt;
}

std::optional<Error> DesktopConsent::keepAnswer(bool allowed) {
    {
        const std::lock_guard lock(mutex_);
        answer_ = allowed;
    }
    if (!folder_) return std::nullopt;
    makePrivateFolder(*folder_);  // a failure is the writing's
    const auto written = fileManager_.writeFile(
        *folder_ / fileName, std::as_bytes(std::span(allowed ? allowedLine : refusedLine)),
        WriteExisting::replace);
    if (!written) return written.error();
    return std::nullopt;
}

}  // namespace quillmere
