#include "CommandLine/StylesCommand.h"

#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>

namespace quillmere::cli {

int listStyles(const StylesOptions& options, const Localization& localization) {
    for (const EnhanceStyle style : allEnhanceStyles) {
        const std::string key(displayKey(style));
        const std::string name = localization.localizedString(key);
        const auto scale = outputScale(style);
        if (options.json) {
            nlohmann::ordered_json line = {{"style", key}, {"name", name}, {"scale", nullptr}};
            if (scale) line["scale"] = *scale;
            line["pictures"] = scale.has_value();
            std::printf("%s\n", line.dump().c_str());
        } else {
            const std::string what = !scale        ? "for videos"
                                     : *scale == 1 ? "the picture itself"
                                                   : std::to_string(*scale) + " times as large";
            std::printf("%-13s %-13s %s\n", key.c_str(), name.c_str(), what.c_str());
        }
    }
    return 0;
}

}  // namespace quillmere::cli
