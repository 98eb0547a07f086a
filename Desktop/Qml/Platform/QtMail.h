// Mail through the user's own mail program.
#pragma once

#include <QProcess>
#include <QStandardPaths>
#include <QString>

#include "Platform/Sharing/MFMailComposeViewController.h"

namespace quillmere {

/// By the desktop's `xdg-email`, which doesn't tell what became of the draft: one that opened
/// counts as sent.
class QtMail final : public MFMailComposeViewController {
public:
    bool canSendMail() const override {
        return !QStandardPaths::findExecutable("xdg-email").isEmpty();
    }
    void compose(const MailDraft& draft,
                 std::function<void(const Result<MFMailComposeResult>&)> didFinish) override {
        const bool opened = QProcess::startDetached(
            "xdg-email",
            {"--utf8", "--subject", QString::fromStdString(draft.subject), "--body",
             QString::fromStdString(draft.body), QString::fromStdString(draft.recipient)});
        if (opened) return didFinish(MFMailComposeResult::sent);
        didFinish(Error{"quillmere.mail", 1, "No mail program could be started."});
    }
};

}  // namespace quillmere
