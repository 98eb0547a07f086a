// Writing a mail in the user's own mail program.
#pragma once

#include <functional>
#include <string>

#include "Base/Result.h"

namespace quillmere {

enum class MFMailComposeResult { cancelled = 0, saved = 1, sent = 2, failed = 3 };

struct MailDraft {
    std::string recipient;
    std::string subject;
    std::string body;  // plain text
};

/// Main thread.
class MFMailComposeViewController {
public:
    virtual ~MFMailComposeViewController() = default;

    /// Whether there is a program to write with.
    virtual bool canSendMail() const = 0;

    /// Opens the draft. The handler runs once, on the main thread, when the user is done with it,
    /// as far as the system tells that: a program of its own counts as sent once it has opened.
    virtual void compose(const MailDraft& draft,
                         std::function<void(const Result<MFMailComposeResult>&)> didFinish) = 0;
};

}  // namespace quillmere
