// The application's resources as files in one folder.
#pragma once

#include <filesystem>
#include <utility>

#include "Base/Result.h"
#include "Platform/Application/Bundle.h"

namespace quillmere {

/// `Models/` holds the compiled networks, `Strings/` the texts, `Samples/` pictures to try; what is
/// one of its kind lies in the folder itself.
class ResourceBundle final : public Bundles, public Bundle {
public:
    explicit ResourceBundle(std::filesystem::path folder) : folder_(std::move(folder)) {}

    /// The folder that belongs to the running program: `../share/quillmere` beside its own.
    static Result<ResourceBundle> besideTheProgram();

    const Bundle& bundleForClass(std::string_view) const override { return *this; }

    /// A compiled network has its location whether or not set-up has fetched it.
    std::optional<std::filesystem::path> urlForResource(std::string_view name,
                                                        std::string_view extension) const override;

private:
    std::filesystem::path folder_;
};

}  // namespace quillmere
