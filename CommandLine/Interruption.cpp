#include "CommandLine/Interruption.h"

#include <unistd.h>
#include <csignal>
#include <cstdlib>
#include <thread>

namespace quillmere::cli {
namespace {

sigset_t endingSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&signals, signal);
    return signals;
}

void waitForSignal() {
    const sigset_t signals = endingSignals();
    int signal = 0;
    while (sigwait(&signals, &signal) != 0) {
    }
}

[[noreturn]] void endNow() {
    constexpr char message[] = "\nInterrupted.\n";
    (void)!write(STDERR_FILENO, message, sizeof message - 1);
    std::_Exit(interruptedExitCode);
}

}  // namespace

Interruption::Interruption() {
    const sigset_t signals = endingSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::thread([this] {
        waitForSignal();
        std::thread([] {
            waitForSignal();
            endNow();
        }).detach();
        {
            const std::lock_guard stillThere(beforeEndMutex_);
            if (cancel_) return cancel_();
        }
        const std::unique_lock written = whileWriting();
        const std::lock_guard stillThere(beforeEndMutex_);
        if (beforeEnd_) beforeEnd_();
        endNow();
    }).detach();
}

}  // namespace quillmere::cli
