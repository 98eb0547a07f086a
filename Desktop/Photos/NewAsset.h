// What a change block asks for.
#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "Platform/Photos/PHPhotoLibrary.h"

namespace quillmere {

/// One asset to be made.
struct NewAsset {
    struct Resource {
        PHAssetResourceType type;
        std::string typeIdentifier;
        std::vector<std::byte> bytes;
    };
    /// A file to be copied.
    struct File {
        std::filesystem::path path;
        /// Otherwise it is taken whatever it holds.
        bool mustBeMovie = true;
    };

    std::variant<std::monostate, Resource, UIImage, File> source;
    std::optional<Date> creationDate;
    std::optional<Location> location;
};

/// Collects them, in their order.
class NewAssets final : public PHChanges {
public:
    PHAssetCreationRequest& creationRequestForAsset() override { return request({}); }
    PHAssetCreationRequest& creationRequestForAssetFromImage(const UIImage& image) override {
        return request({image, {}, {}});
    }
    PHAssetCreationRequest& creationRequestForAssetFromVideoAtFileURL(
        const std::filesystem::path& url) override {
        return request({NewAsset::File{url}, {}, {}});
    }

    std::vector<NewAsset> take() {
        std::vector<NewAsset> assets;
        for (const auto& request : requests_) assets.push_back(std::move(request->asset));
        return assets;
    }

private:
    struct Request final : PHAssetCreationRequest {
        explicit Request(NewAsset described) : asset(std::move(described)) {}

        void addResourceWithType(PHAssetResourceType type, std::span<const std::byte> data,
                                 std::string_view uniformTypeIdentifier) override {
            asset.source = NewAsset::Resource{
                type, std::string(uniformTypeIdentifier), {data.begin(), data.end()}};
        }
        void setCreationDate(Date date) override { asset.creationDate = date; }
        void setLocation(const Location& location) override { asset.location = location; }

        NewAsset asset;
    };

    PHAssetCreationRequest& request(NewAsset asset) {
        requests_.push_back(std::make_unique<Request>(std::move(asset)));
        return *requests_.back();
    }

    std::vector<std::unique_ptr<Request>> requests_;
};

}  // namespace quillmere
