// Sharing, mail and alerts that only remember what was asked for.
#pragma once

#include <deque>
#include <utility>

#include "Platform/Application/UIAlertController.h"
#include "Platform/Application/UIDevice.h"
#include "Platform/Sharing/MFMailComposeViewController.h"
#include "Platform/Sharing/UIActivityViewController.h"

namespace quillmere {

struct FakeActivityViewController final : UIActivityViewController {
    struct Presented {
        std::vector<ActivityItem> items;
        UIViewController* presenter;
    };
    std::vector<Presented> presented;

    void present(std::vector<ActivityItem> items, UIViewController& presenter) override {
        presented.push_back({std::move(items), &presenter});
    }
};

struct FakeMail final : MFMailComposeViewController {
    bool hasAccount = true;
    std::deque<Result<MFMailComposeResult>> ends;  // of the next drafts; sent without one
    std::vector<MailDraft> drafts;

    bool canSendMail() const override { return hasAccount; }
    void compose(const MailDraft& draft,
                 std::function<void(const Result<MFMailComposeResult>&)> didFinish) override {
        drafts.push_back(draft);
        Result<MFMailComposeResult> end = MFMailComposeResult::sent;
        if (!ends.empty()) {
            end = ends.front();
            ends.pop_front();
        }
        didFinish(end);
    }
};

struct FakeAlertController final : UIAlertController {
    struct Presented {
        std::string title, message, button;
        std::function<void()> confirmed;
    };
    std::vector<Presented> presented;

    void present(std::string title, std::string message, std::string button,
                 std::function<void()> confirmed, UIViewController&) override {
        presented.push_back(
            {std::move(title), std::move(message), std::move(button), std::move(confirmed)});
    }
};

struct FakeUIDevice final : UIDevice {
    std::string name() const override { return "Desk"; }
    std::string systemVersion() const override { return "12"; }
};

}  // namespace quillmere
