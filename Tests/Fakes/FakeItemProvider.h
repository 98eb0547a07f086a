#pragma once

#include <map>
#include <string>
#include <utility>

#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Photos/NSItemProvider.h"

namespace quillmere {

/// An item that offers what a test puts into it; answers come on a global queue.
class FakeItemProvider final : public NSItemProvider {
public:
    explicit FakeItemProvider(Dispatch& dispatch) : dispatch_(dispatch) {}

    std::map<std::string, Result<std::vector<std::byte>>, std::less<>> data;
    std::map<std::string, Result<std::filesystem::path>, std::less<>> files;
    std::optional<Result<UIImage>> image;
    std::optional<std::string> name;

    /// Those of `files` where none are set.
    std::optional<std::vector<std::string>> types;

    std::optional<std::string> suggestedName() const override { return name; }
    std::vector<std::string> registeredTypeIdentifiers() const override {
        if (types) return *types;
        std::vector<std::string> all;
        for (const auto& [type, file] : files) all.push_back(type);
        return all;
    }
    bool hasItemConformingToTypeIdentifier(std::string_view typeIdentifier) const override {
        return data.contains(typeIdentifier) || files.contains(typeIdentifier);
    }
    void loadDataRepresentationForTypeIdentifier(std::string_view typeIdentifier,
                                                 DataHandler completionHandler) override {
        answer(std::move(completionHandler), data.at(std::string(typeIdentifier)));
    }
    void loadFileRepresentationForTypeIdentifier(std::string_view typeIdentifier,
                                                 FileHandler completionHandler) override {
        answer(std::move(completionHandler), files.at(std::string(typeIdentifier)));
    }
    bool canLoadObjectOfClassUIImage() const override { return image.has_value(); }
    void loadObjectOfClassUIImage(ImageHandler completionHandler) override {
        answer(std::move(completionHandler), *image);
    }

private:
    template <class Handler, class Value>
    void answer(Handler handler, const Value& value) {
        dispatch_.globalQueue(QualityOfService::userInitiated).async([handler, value] {
            handler(value);
        });
    }

    Dispatch& dispatch_;
};

}  // namespace quillmere
