#include "Quillmere/Views/Home/WaysIn.h"

#include <utility>

#include "Base/FormatString.h"
#include "Quillmere/Models/Services/LocalizedReason.h"
#include "Quillmere/Views/Home/DocumentPicker.h"
#include "Quillmere/Views/Home/ImagePicker.h"
#include "Quillmere/Views/Home/VideoPicker.h"

namespace quillmere {
namespace {

/// Of a pick that is none: its end ends nothing.
constexpr std::uint64_t cancelled = 0;

bool isVideo(const PHPickerResult& result) {
    return !result.itemProvider->canLoadObjectOfClassUIImage();
}

}  // namespace

/// One pick's own fields, which reach those of the home screen while it is the latest. Whoever may
/// still write them holds it.
struct WaysIn::Pick {
    Pick(WaysIn& ways_, std::uint64_t number_) : ways(ways_), number(number_) {
        HomeView& home = ways.ports_.home;
        passOn(image, home.tmpInputImage);
        passOn(videoURL, home.inputVideoUrl);
        passOn(alert, home.alert);
    }
    ~Pick() {
        ways.ports_.dispatch.mainQueue().async(
            [&ways = ways, number = number] { ways.end(number); });
    }

    template <class T>
    void passOn(Published<T>& from, Published<T>& to) {
        subscriptions.push_back(from.subscribe([this, &to](const T& value) {
            ways.ports_.dispatch.mainQueue().async([&ways = ways, number = number, &to, value] {
                if (ways.isLatest(number)) to.set(value);
            });
        }));
    }

    WaysIn& ways;
    const std::uint64_t number;
    Published<std::optional<UIImage>> image;
    Published<std::optional<std::filesystem::path>> videoURL;
    Published<std::optional<AlertTypes>> alert;
    std::vector<Subscription> subscriptions;
};

std::uint64_t WaysIn::begin() {
    isLoading.set(true);
    return ++latest_;
}

void WaysIn::end(std::uint64_t number) {
    if (isLatest(number)) isLoading.set(false);
}

void WaysIn::cancel() {
    ++latest_;
    isLoading.set(false);
    ports_.home.pickerResults.set(std::nullopt);  // or a sample would open with these picks
}

void WaysIn::picked(const std::vector<PHPickerResult>& results) {
    ports_.home.showingVideoPicker.get() ? pickVideo(results) : pickPictures(results);
}

void WaysIn::pickPictures(const std::vector<PHPickerResult>& results) {
    HomeView& home = ports_.home;
    const auto pick = std::make_shared<Pick>(*this, results.empty() ? cancelled : begin());
    ImagePicker({pick->image, home.pickerResults, home.showingImagePicker},
                home.selectMultiple.get(), ports_.imageIO, pick)
        .didFinishPicking(results);
}

void WaysIn::pickVideo(const std::vector<PHPickerResult>& results) {
    HomeView& home = ports_.home;
    const auto pick = std::make_shared<Pick>(*this, results.empty() ? cancelled : begin());
    VideoPicker{ports_.dispatch, ports_.fileManager, ports_.videoFiles,       ports_.localization,
                pick->videoURL,  pick->alert,        home.showingVideoPicker, pick}
        .didFinishPicking(results);
}

void WaysIn::filePicked(const std::optional<std::filesystem::path>& file) {
    ports_.home.showingDocumentPicker.set(false);
    if (!file) return;
    decodeInBackground(
        [this, file = *file]() -> Result<UIImage> {
            const auto data = ports_.fileManager.contentsOfFile(file);
            if (!data) return data.error();
            return ports_.imageIO.imageWithData(*data);
        },
        [this, file = *file](const Error&) { refuse(file); });
}

void WaysIn::paste(Decode decode) {
    decodeInBackground(std::move(decode), [this](const Error& error) {
        showError(localizedReason(error, ports_.localization));
    });
}

void WaysIn::decodeInBackground(Decode decode, std::function<void(const Error&)> failed) {
    ports_.dispatch.globalQueue(QualityOfService::userInitiated)
        .async([this, number = begin(), decode = std::move(decode), failed = std::move(failed)] {
            ports_.dispatch.mainQueue().async([this, number, picture = decode(), failed] {
                if (!isLatest(number)) return;
                end(number);
                if (!picture) return failed(picture.error());
                DocumentPicker{ports_.home.tmpInputImage, ports_.home.pickerResults,
                               ports_.fileManager, ports_.imageIO}
                    .didDecode(*picture);
            });
        });
}

void WaysIn::open(const std::vector<std::filesystem::path>& files) {
    if (files.empty()) return;
    ports_.dispatch.globalQueue(QualityOfService::userInitiated)
        .async([this, number = begin(), files] {
            std::vector<PHPickerResult> results;
            for (const auto& file : files) {
                const auto result = ports_.pickerResultForFile(file);
                if (!result) break;
                results.push_back(*result);
            }
            ports_.dispatch.mainQueue().async([this, number, files, results] {
                if (!isLatest(number)) return;
                end(number);
                if (results.size() < files.size()) return refuse(files[results.size()]);
                openResults(results);
            });
        });
}

void WaysIn::openResults(std::vector<PHPickerResult> results) {
    if (isVideo(results.front())) return pickVideo({results.front()});
    std::erase_if(results, isVideo);
    ports_.home.selectMultiple.set(results.size() > 1);
    pickPictures(results);
}

void WaysIn::refuse(const std::filesystem::path& file) {
    showError(formatString(ports_.localization.localizedString("FailedToOpenFile"),
                           {file.filename().string()}));
}

void WaysIn::showError(std::string message) {
    ports_.home.alert.set(AlertTypes::defaultButton(ports_.localization.localizedString("Error"),
                                                    std::move(message)));
}

}  // namespace quillmere
