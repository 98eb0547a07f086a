#include "CommandLine/BackgroundSave.h"

#include <utility>

namespace quillmere::cli {

void BackgroundSave::start(Work work, Report report) {
    finish();
    running_ = true;
    dispatch_.globalQueue(QualityOfService::utility)
        .async([this, work = std::move(work), report = std::move(report)] {
            dispatch_.mainQueue().async([this, report, outcome = work()] {
                running_ = false;
                report(outcome);
            });
        });
}

void BackgroundSave::finish() {
    dispatch_.mainQueue().runUntil([this] { return !running_; });
}

}  // namespace quillmere::cli
