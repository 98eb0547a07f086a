#include "Desktop/Application/ProjectSettingsFile.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string_view>

namespace quillmere {
namespace {

using nlohmann::json;

bool isAnyText(std::string_view) { return true; }

bool isVisible(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c > 0x20 && c < 0x7f; });
}

bool isLink(std::string_view text) {
    constexpr std::string_view scheme = "https://";
    return isVisible(text) && text.starts_with(scheme) && text.size() > scheme.size();
}

/// A server that one tries things out with runs on the same machine.
bool isLoopback(std::string_view text) {
    for (const std::string_view server : {"http://127.0.0.1", "http://localhost", "http://[::1]"}) {
        if (!text.starts_with(server)) continue;
        const std::string_view rest = text.substr(server.size());
        if (rest.empty() || rest[0] == ':' || rest[0] == '/') return true;
    }
    return false;
}

bool isEndpoint(std::string_view text) {
    return isVisible(text) && (isLink(text) || isLoopback(text)) &&
           text.find_first_of("@#") == std::string_view::npos;
}

bool isBaseEndpoint(std::string_view text) {
    return isEndpoint(text) && text.back() != '/' && text.find('?') == std::string_view::npos;
}

bool isMailAddress(std::string_view text) {
    const std::size_t at = text.find('@');
    if (at == std::string_view::npos) return false;
    return isVisible(text) && at != 0 && at + 1 < text.size() &&
           text.find('@', at + 1) == text.npos;
}

bool isDeviceIdentifier(std::string_view text) {
    return text.size() == 32 &&
           text.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
}

struct TextSetting {
    std::string_view name;
    std::string ProjectSettings::*field;
    bool (*isRight)(std::string_view);
    const char* mustBe;
};

constexpr const char* endpoint = "the address of a server that begins with https";
constexpr const char* link = "an address that begins with https";
constexpr const char* identifier = "a text of ASCII letters without blanks";

constexpr TextSetting textSettings[] = {
    {"remoteConfigEndpoint", &ProjectSettings::remoteConfigEndpoint, isEndpoint, endpoint},
    {"inquiryEndpoint", &ProjectSettings::inquiryEndpoint, isBaseEndpoint,
     "the address of a server that begins with https and ends without a slash"},
    {"inquiryTitle", &ProjectSettings::inquiryTitle, isAnyText, "a text"},
    {"inquiryKey", &ProjectSettings::inquiryKey, isVisible, identifier},
    {"supportAddress", &ProjectSettings::supportAddress, isMailAddress, "a mail address"},
    {"storeLink", &ProjectSettings::storeLink, isLink, link},
    {"makerStorePage", &ProjectSettings::makerStorePage, isLink, link},
    {"reviewLink", &ProjectSettings::reviewLink, isLink, link},
    {"adApplicationIdentifier", &ProjectSettings::adApplicationIdentifier, isVisible, identifier},
    {"appOpenAdUnit", &ProjectSettings::appOpenAdUnit, isVisible, identifier},
    {"conversionAdUnit", &ProjectSettings::conversionAdUnit, isVisible, identifier},
    {"saveAdUnit", &ProjectSettings::saveAdUnit, isVisible, identifier},
    {"bannerAdUnit", &ProjectSettings::bannerAdUnit, isVisible, identifier},
};

constexpr std::string_view ads = "ads";
constexpr std::string_view testDevices = "testDeviceIdentifiers";

class Reader {
public:
    Reader(const std::filesystem::path& path, Console& console) : path_(path), console_(console) {}

    ProjectSettings read(FileManager& fileManager) {
        const auto contents = fileManager.contentsOfFile(path_);
        const json object = contents ? json::parse(*contents, nullptr, false) : json();
        if (!object.is_object()) {
            console_.print("The project settings can't be read at " + path_.string() +
                           "; all of them count as missing.");
            return {};
        }
        for (const auto& [name, value] : object.items()) take(name, value);
        return settings_;
    }

private:
    void take(const std::string& name, const json& value) {
        if (name == ads) return takeAds(value);
        if (name == testDevices) return takeTestDevices(value);
        const auto setting = std::find_if(std::begin(textSettings), std::end(textSettings),
                                          [&](const TextSetting& s) { return s.name == name; });
        if (setting == std::end(textSettings)) return complain(name, "there is no such setting");
        const auto* text = value.get_ptr<const std::string*>();
        if (!text || !(text->empty() || setting->isRight(*text))) {
            return complain(name, std::string("it must be ") + setting->mustBe);
        }
        settings_.*(setting->field) = *text;
    }

    void takeAds(const json& value) {
        if (value != "none" && value != "house") {
            return complain(ads, "it must be \"none\" or \"house\"");
        }
        settings_.ads = value == "house" ? AdSource::house : AdSource::none;
    }

    void takeTestDevices(const json& value) {
        const bool right = value.is_array() &&
                           std::all_of(value.begin(), value.end(), [](const json& identifier_) {
                               const auto* text = identifier_.get_ptr<const std::string*>();
                               return text && isDeviceIdentifier(*text);
                           });
        if (!right) {
            return complain(testDevices, "it must be a list of texts of 32 hexadecimal digits");
        }
        settings_.testDeviceIdentifiers = value.get<std::vector<std::string>>();
    }

    void complain(std::string_view name, const std::string& why) {
        console_.print("The setting \"" + std::string(name) + "\" in " + path_.string() +
                       " is ignored: " + why + ".");
    }

    const std::filesystem::path& path_;
    Console& console_;
    ProjectSettings settings_;
};

}  // namespace

ProjectSettings readProjectSettings(FileManager& fileManager, const std::filesystem::path& path,
                                    Console& console) {
    return Reader(path, console).read(fileManager);
}

}  // namespace quillmere
