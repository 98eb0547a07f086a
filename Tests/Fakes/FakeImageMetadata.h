#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "Platform/ImageIO/ImageMetadata.h"
#include "Tests/Fakes/CallLog.h"

namespace quillmere {

/// Files that a test makes of a type and of properties, known by their bytes; rewriting one makes
/// another. Calls are logged as `propertiesOfImage` and `imageWithProperties TYPE`.
class FakeImageMetadata final : public ImageMetadata {
public:
    struct File {
        std::string typeIdentifier;
        CGImageProperties properties;
    };

    explicit FakeImageMetadata(CallLog& log) : log_(log) {}

    /// Bytes that no other file has.
    std::vector<std::byte> add(File file) {
        const std::string name = "file " + std::to_string(files.size());
        files[name] = std::move(file);
        std::vector<std::byte> data;
        for (const char letter : name) data.push_back(static_cast<std::byte>(letter));
        return data;
    }

    const File& file(std::span<const std::byte> data) const { return files.at(nameOf(data)); }

    Result<CGImageProperties> propertiesOfImage(std::span<const std::byte> data) override {
        log_.record("propertiesOfImage");
        const auto found = files.find(nameOf(data));
        if (found == files.end() || !reads) return damaged();
        return found->second.properties;
    }

    Result<std::vector<std::byte>> imageWithProperties(
        std::span<const std::byte> data, std::string_view typeIdentifier,
        const CGImageProperties& properties) override {
        log_.record("imageWithProperties " + std::string(typeIdentifier));
        const auto found = files.find(nameOf(data));
        if (found == files.end() || !writes) return damaged();
        if (found->second.typeIdentifier != typeIdentifier) return damaged();
        File changed = found->second;
        for (const auto& [name, table] : properties) {
            CGImagePropertyTable& target = changed.properties[name];
            if (name == kCGImagePropertyGPSDictionary) target.clear();
            for (const auto& [key, value] : table) target[key] = value;
        }
        return add(std::move(changed));
    }

    std::map<std::string, File> files;  // by their bytes
    bool reads = true;                  // else a known file has no properties that can be read
    bool writes = true;                 // else nothing can be written

private:
    static std::string nameOf(std::span<const std::byte> data) {
        return {reinterpret_cast<const char*>(data.data()), data.size()};
    }
    static Error damaged() { return {"fake.metadata", 1, "The picture is damaged."}; }

    CallLog& log_;
};

}  // namespace quillmere
