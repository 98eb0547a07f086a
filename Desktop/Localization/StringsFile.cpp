#include "Desktop/Localization/StringsFile.h"

#include <fstream>
#include <nlohmann/json.hpp>

namespace quillmere {

Result<StringsFile> StringsFile::read(const std::filesystem::path& path) {
    std::ifstream file(path);
    const nlohmann::json json = nlohmann::json::parse(file, nullptr, false);
    const auto allTexts = [&] {
        for (const auto& text : json) {
            if (!text.is_string()) return false;
        }
        return json.is_object();
    };
    if (!file || !allTexts()) {
        return Error{"quillmere.localization",
                     1,
                     "The program's texts can't be read at %@. Install Quillmere again.",
                     {path.string()}};
    }
    return StringsFile(json.get<Texts>());
}

void StringsFile::transform(std::string (*change)(std::string_view)) {
    for (auto& [key, text] : texts_) text = change(text);
}

std::string StringsFile::localizedString(std::string_view key) const {
    const auto found = texts_.find(key);
    return found == texts_.end() ? std::string(key) : found->second;
}

}  // namespace quillmere
