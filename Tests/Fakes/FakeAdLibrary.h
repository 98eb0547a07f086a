#pragma once

#include <utility>

#include "Platform/AdLibrary/AdLibrary.h"
#include "Tests/Fakes/CallLog.h"

namespace quillmere {

/// Starts when the test calls the handler.
class FakeAdLibrary final : public ALPrivacySettings, public GADMobileAds {
public:
    explicit FakeAdLibrary(CallLog& log) : log_(log) {}

    std::function<void()> startHandler;

    void setHasUserConsent(bool has) override {
        log_.record(has ? "setHasUserConsent true" : "setHasUserConsent false");
    }
    void setDoNotSell(bool doNot) override {
        log_.record(doNot ? "setDoNotSell true" : "setDoNotSell false");
    }
    void setTestDeviceIdentifiers(const std::vector<std::string>& identifiers) override {
        std::string line = "setTestDeviceIdentifiers";
        for (const std::string& identifier : identifiers) line += " " + identifier;
        log_.record(line);
    }
    void startWithCompletionHandler(std::function<void()> completionHandler) override {
        log_.record("start ads");
        startHandler = std::move(completionHandler);
    }

private:
    CallLog& log_;
};

}  // namespace quillmere
