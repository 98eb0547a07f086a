// What an edition of the application is told about its maker and its servers.
#pragma once

#include <string>
#include <vector>

namespace quillmere {

/// Where ads come from: from nowhere, or from the maker's own list of applications.
enum class AdSource { none, house };

/// Read once at start and checked by its reader: what stands here is well formed or empty, and
/// empty means that the edition has no such thing.
struct ProjectSettings {
    /// The `https` address of the document of remote values. Empty: the built-in values stay in
    /// force, and no server is asked.
    std::string remoteConfigEndpoint;

    /// The `https` address that an inquiry's path is appended to: host and stage, with no slash at
    /// the end. Empty: no inquiry can be sent.
    std::string inquiryEndpoint;
    /// Names the application in an inquiry.
    std::string inquiryTitle;
    /// Goes with an inquiry in its header. No secret: every copy of the application has it.
    std::string inquiryKey;

    /// Mail from users goes here. Empty: no mail can be composed.
    std::string supportAddress;

    /// Pages that are opened in the user's browser or named in a text. Empty: nothing is opened,
    /// and the text ends before it.
    std::string storeLink;
    std::string makerStorePage;
    std::string reviewLink;

    AdSource ads = AdSource::none;
    /// What an ad network knows the application by. With one, the user is asked for consent.
    std::string adApplicationIdentifier;
    /// What the ad library knows the four placements by. Empty: that placement has no ads.
    std::string appOpenAdUnit;
    std::string conversionAdUnit;
    std::string saveAdUnit;
    std::string bannerAdUnit;
    /// 32 hexadecimal digits each. Devices of developers, which get test ads only.
    std::vector<std::string> testDeviceIdentifiers;

    friend bool operator==(const ProjectSettings&, const ProjectSettings&) = default;
};

}  // namespace quillmere
