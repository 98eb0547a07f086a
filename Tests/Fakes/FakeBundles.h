#pragma once

#include <set>
#include <string>

#include "Platform/Application/Bundle.h"
#include "Tests/Fakes/CallLog.h"

namespace quillmere {

/// Every class comes with the one bundle, which has every resource but the `missing` ones.
class FakeBundles final : public Bundles, public Bundle {
public:
    explicit FakeBundles(CallLog& log) : log_(log) {}

    const Bundle& bundleForClass(std::string_view className) const override {
        log_.record("bundleForClass " + std::string(className));
        return *this;
    }

    std::optional<std::filesystem::path> urlForResource(std::string_view name,
                                                        std::string_view extension) const override {
        const std::string file = std::string(name) + "." + std::string(extension);
        log_.record("urlForResource " + file);
        if (missing.contains(file)) return std::nullopt;
        return "/bundle/" + file;
    }

    std::set<std::string> missing;

private:
    CallLog& log_;
};

}  // namespace quillmere
