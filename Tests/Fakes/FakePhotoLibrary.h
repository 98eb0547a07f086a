#pragma once

#include <algorithm>
#include <deque>
#include <memory>
#include <mutex>
#include <utility>

#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Photos/PHPhotoLibrary.h"

namespace quillmere {

/// What a change block asked for, kept in the order of the requests.
struct SavedAsset {
    std::string typeIdentifier;  // empty for a picture object or a video file
    std::vector<std::byte> data;
    std::optional<UIImage> image;
    std::filesystem::path videoFile;
    std::optional<Date> creationDate;
    std::optional<Location> location;
};

/// A library in memory. It can be told how the next changes fail.
class FakePhotoLibrary final : public PHPhotoLibrary {
public:
    explicit FakePhotoLibrary(Dispatch& dispatch)
        : dispatch_(dispatch),
          changes_(dispatch.makeSerialQueue("changes", QualityOfService::standard)) {}

    /// One end for each of the next changes: an error, or success for nothing; then success.
    void failNext(std::optional<Error> error) {
        const std::lock_guard lock(mutex_);
        failures_.push_back(std::move(error));
    }
    /// Which files are movies: those that exist, unless a test says otherwise.
    std::function<bool(const std::filesystem::path&)> isMovie =
        [](const std::filesystem::path& path) { return std::filesystem::exists(path); };
    /// The next changes fail without saying why.
    void failWithoutError() {
        const std::lock_guard lock(mutex_);
        failsWithoutError_ = true;
    }
    void add(PHAsset asset) {
        const std::lock_guard lock(mutex_);
        records_.push_back(std::move(asset));
    }
    std::vector<SavedAsset> savedAssets() const {
        const std::lock_guard lock(mutex_);
        return saved_;
    }

    void performChanges(ChangeBlock changeBlock, CompletionHandler completionHandler) override {
        changes_->async(
            [this, block = std::move(changeBlock), handler = std::move(completionHandler)] {
                Changes changes;
                block(changes);
                std::optional<Error> error = invalidResourceOf(changes);
                bool success = true;
                {
                    const std::lock_guard lock(mutex_);
                    if (!error && !failures_.empty()) {
                        error = failures_.front();
                        failures_.pop_front();
                    }
                    success = !error && !failsWithoutError_;
                    if (success) {
                        for (const auto& request : changes.requests)
                            saved_.push_back(request->asset);
                    }
                }
                dispatch_.globalQueue(QualityOfService::utility).async([handler, success, error] {
                    handler(success, error);
                });
            });
    }

    void UISaveVideoAtPathToSavedPhotosAlbum(const std::filesystem::path& path,
                                             SavedHandler completionHandler) override {
        performChanges(
            [path](PHChanges& changes) { changes.creationRequestForAssetFromVideoAtFileURL(path); },
            [this, handler = std::move(completionHandler)](bool,
                                                           const std::optional<Error>& error) {
                dispatch_.mainQueue().async([handler, error] { handler(error); });
            });
    }

    std::vector<PHAsset> fetchAssetsWithLocalIdentifiers(
        const std::vector<std::string>& identifiers) override {
        const std::lock_guard lock(mutex_);
        std::vector<PHAsset> found;
        for (const std::string& identifier : identifiers) {
            const auto record = std::find_if(
                records_.begin(), records_.end(),
                [&](const PHAsset& asset) { return asset.localIdentifier == identifier; });
            if (record != records_.end()) found.push_back(*record);
        }
        return found;
    }

private:
    struct Request final : PHAssetCreationRequest {
        SavedAsset asset;

        void addResourceWithType(PHAssetResourceType, std::span<const std::byte> data,
                                 std::string_view uniformTypeIdentifier) override {
            asset.data.assign(data.begin(), data.end());
            asset.typeIdentifier = uniformTypeIdentifier;
        }
        void setCreationDate(Date date) override { asset.creationDate = date; }
        void setLocation(const Location& location) override { asset.location = location; }
    };

    struct Changes final : PHChanges {
        std::vector<std::unique_ptr<Request>> requests;

        PHAssetCreationRequest& creationRequestForAsset() override {
            requests.push_back(std::make_unique<Request>());
            return *requests.back();
        }
        PHAssetCreationRequest& creationRequestForAssetFromImage(const UIImage& image) override {
            creationRequestForAsset();
            requests.back()->asset.image = image;
            return *requests.back();
        }
        PHAssetCreationRequest& creationRequestForAssetFromVideoAtFileURL(
            const std::filesystem::path& url) override {
            creationRequestForAsset();
            requests.back()->asset.videoFile = url;
            return *requests.back();
        }
    };

    std::optional<Error> invalidResourceOf(const Changes& changes) const {
        for (const auto& request : changes.requests) {
            const SavedAsset& asset = request->asset;
            const bool hasFile = !asset.videoFile.empty() && isMovie(asset.videoFile);
            if (asset.typeIdentifier.empty() && !asset.image && !hasFile) {
                return Error{PHPhotosErrorDomain, PHPhotosErrorInvalidResource, "invalid"};
            }
        }
        return std::nullopt;
    }

    Dispatch& dispatch_;
    std::shared_ptr<DispatchQueue> changes_;
    mutable std::mutex mutex_;
    std::deque<std::optional<Error>> failures_;
    bool failsWithoutError_ = false;
    std::vector<PHAsset> records_;
    std::vector<SavedAsset> saved_;
};

}  // namespace quillmere
