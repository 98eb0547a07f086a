#include "Desktop/ImageIO/XMPProperties.h"

#include <exception>
#include <exiv2/exiv2.hpp>
#include <mutex>

namespace quillmere {

std::map<std::string, std::string> propertiesOfXMP(const std::string& packet) {
    if (packet.empty()) return {};
    // The toolkit behind Exiv2 keeps its names process-wide, without a lock of its own.
    static std::mutex toolkit;
    const std::lock_guard lock(toolkit);
    std::map<std::string, std::string> properties;
    try {
        Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
        Exiv2::XmpData data;
        if (Exiv2::XmpParser::decode(data, packet) != 0) return {};
        for (const Exiv2::Xmpdatum& entry : data) {
            if (entry.typeId() != Exiv2::xmpText) continue;
            properties[entry.groupName() + ":" + entry.tagName()] = entry.toString();
        }
    } catch (const std::exception&) {
        return {};
    }
    return properties;
}

}  // namespace quillmere
