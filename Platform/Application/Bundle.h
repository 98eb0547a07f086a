// Where the application's own resources lie.
#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

namespace quillmere {

/// The resources that the application was built with. May be called from any thread.
class Bundle {
public:
    virtual ~Bundle() = default;

    /// Nothing for a resource that the application was not built with. A resource that set-up
    /// fetches has its location even where it was not fetched yet: loading it then fails.
    virtual std::optional<std::filesystem::path> urlForResource(
        std::string_view name, std::string_view extension) const = 0;
};

/// Finds the bundle that a class of the application came with.
class Bundles {
public:
    virtual ~Bundles() = default;

    virtual const Bundle& bundleForClass(std::string_view className) const = 0;
};

}  // namespace quillmere
