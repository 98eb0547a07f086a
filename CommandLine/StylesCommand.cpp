#include "CommandLine/StylesCommand.h"

#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>

#include "Base/FormatString.h"

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
            const std::string what = localization.localizedString(!scale        ? "StyleForVideos"
                                                                  : *scale == 1 ? "StyleKeepsSize"
                                                                                : "StyleEnlarges");
            std::printf("%-13s %s, %s\n", key.c_str(), name.c_str(),
                        formatString(what, {std::to_string(scale.value_or(1))}).c_str());
        }
    }
    return 0;
}

}  // namespace quillmere::cli
