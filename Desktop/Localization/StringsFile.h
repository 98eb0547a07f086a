// The application's texts, from one JSON object of keys and texts a language.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <utility>

#include "Base/Result.h"
#include "Platform/Localization/Localization.h"

namespace quillmere {

class StringsFile final : public Localization {
public:
    /// Fails for a file that is missing or anything but an object of texts.
    static Result<StringsFile> read(const std::filesystem::path& path);

    /// Replaces each text by what `change` makes of it. Before others have the table.
    void transform(std::string (*change)(std::string_view));

    std::string localizedString(std::string_view key) const override;

private:
    using Texts = std::map<std::string, std::string, std::less<>>;

    explicit StringsFile(Texts texts) : texts_(std::move(texts)) {}

    Texts texts_;
};

}  // namespace quillmere
