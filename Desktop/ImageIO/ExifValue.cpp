#include "Desktop/ImageIO/ExifValue.h"

#include <array>
#include <cstdio>
#include <span>
#include <string>
#include <variant>

#include "Desktop/ImageIO/ExifRational.h"

namespace quillmere {
namespace {

using ValueRef = std::unique_ptr<Exiv2::Value>;

// By way of their own types: Exiv2's common access makes large unsigned parts negative.
template <class Value>
std::optional<double> fractionIn(const Exiv2::Value& value, std::size_t index) {
    const auto* fractions = dynamic_cast<const Value*>(&value);
    if (!fractions || index >= fractions->value_.size()) return {};
    const auto& [numerator, denominator] = fractions->value_[index];
    if (denominator == 0) return {};
    return static_cast<double>(numerator) / static_cast<double>(denominator);
}

std::optional<double> fraction(const Exiv2::Value& value, std::size_t index) {
    const auto found = fractionIn<Exiv2::URationalValue>(value, index);
    return found ? found : fractionIn<Exiv2::RationalValue>(value, index);
}

std::optional<CGImagePropertyValue> placeOrTime(const Exiv2::Exifdatum& entry) {
    std::array<double, 3> parts{};
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const auto part = fraction(entry.value(), i);
        if (!part) return {};
        parts[i] = *part;
    }
    if (entry.tagName() != "GPSTimeStamp") return parts[0] + parts[1] / 60 + parts[2] / 3600;
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "%02.0f:%02.0f:%02.0f", parts[0], parts[1], parts[2]);
    return text.data();
}

ValueRef rationals(std::span<const ExifRational> parts) {
    auto value = std::make_unique<Exiv2::URationalValue>();
    for (const ExifRational& part : parts) value->value_.emplace_back(part);
    return value;
}

struct ValueFor {
    const Exiv2::ExifKey& key;

    ValueRef operator()(const std::string& text) const {
        if (key.key() == "Exif.GPSInfo.GPSTimeStamp") {
            const auto parts = exifTime(text);
            return parts ? rationals(*parts) : nullptr;
        }
        if (key.defaultTypeId() != Exiv2::asciiString) return nullptr;
        auto value = std::make_unique<Exiv2::AsciiValue>();
        value->read(text);  // which ends it with the zero that the constructor forgets
        return value;
    }

    ValueRef operator()(double number) const {
        if (key.defaultTypeId() != Exiv2::unsignedRational) return nullptr;
        if (key.tagName().ends_with("Latitude") || key.tagName().ends_with("Longitude")) {
            const auto parts = exifDegrees(number);
            return parts ? rationals(*parts) : nullptr;
        }
        const auto part = exifRational(number);
        return part ? rationals(std::array{*part}) : nullptr;
    }

    ValueRef operator()(std::int64_t number) const {
        const Exiv2::TypeId type = key.defaultTypeId();
        if (type != Exiv2::unsignedByte && type != Exiv2::unsignedShort &&
            type != Exiv2::unsignedLong) {
            return nullptr;
        }
        const long bits = 8 * Exiv2::TypeInfo::typeSize(type);
        if (number < 0 || number >> bits != 0) return nullptr;
        ValueRef value(Exiv2::Value::create(type).release());
        value->read(std::to_string(number));
        return value;
    }
};

}  // namespace

std::optional<CGImagePropertyValue> valueOfExif(const Exiv2::Exifdatum& entry) {
    const Exiv2::Value& value = entry.value();
    switch (value.typeId()) {
        case Exiv2::asciiString:
            return value.toString();
        case Exiv2::unsignedByte:
        case Exiv2::signedByte:
        case Exiv2::unsignedShort:
        case Exiv2::signedShort:
        case Exiv2::unsignedLong:
        case Exiv2::signedLong:
            if (value.count() == 1) return std::int64_t{value.toLong(0)};
            return {};
        case Exiv2::unsignedRational:
        case Exiv2::signedRational:
            if (value.count() == 1) return fraction(value, 0);
            if (value.count() == 3 && entry.groupName() == "GPSInfo") return placeOrTime(entry);
            return {};
        default:
            return {};
    }
}

std::unique_ptr<Exiv2::Value> exifValueOf(const Exiv2::ExifKey& key,
                                          const CGImagePropertyValue& value) {
    return std::visit(ValueFor{key}, value);
}

}  // namespace quillmere
