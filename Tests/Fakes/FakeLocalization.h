#pragma once

#include <map>
#include <string>

#include "Platform/Localization/Localization.h"
#include "Tests/Fakes/CallLog.h"

namespace quillmere {

/// Texts that a test sets; look-ups are logged as `localized KEY`.
class FakeLocalization final : public Localization {
public:
    explicit FakeLocalization(CallLog& log) : log_(log) {}

    std::string localizedString(std::string_view key) const override {
        log_.record("localized " + std::string(key));
        const auto found = texts.find(std::string(key));
        return found == texts.end() ? std::string(key) : found->second;
    }

    std::map<std::string, std::string> texts;

private:
    CallLog& log_;
};

}  // namespace quillmere
