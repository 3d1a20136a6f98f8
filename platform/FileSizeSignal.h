// Writing up to the process's file size limit.
#pragma once

#include <csignal>
#include <ctime>

namespace platform {

// Blocks the signal SIGXFSZ on this thread while it lives. By default that signal ends the process;
// while it is blocked, a write beyond the limit fails with EFBIG.
class FileSizeSignalGuard {
public:
    FileSizeSignalGuard() noexcept : fBefore(), fWasPending(IsPending()) {
        sigset_t const signals = TheSignal();
        pthread_sigmask(SIG_BLOCK, &signals, &fBefore);
    }
    FileSizeSignalGuard(FileSizeSignalGuard const&) = delete;
    FileSizeSignalGuard& operator=(FileSizeSignalGuard const&) = delete;

    // Consumes a signal that became pending in the meantime, so that it is not delivered when the
    // signal is unblocked.
    ~FileSizeSignalGuard() {
        if (!fWasPending && IsPending()) {
            sigset_t const signals = TheSignal();
            timespec const now{};
            sigtimedwait(&signals, nullptr, &now);
        }
        pthread_sigmask(SIG_SETMASK, &fBefore, nullptr);
    }

private:
    static sigset_t TheSignal() noexcept {
        sigset_t signals;
        sigemptyset(&signals);
        sigaddset(&signals, SIGXFSZ);
        return signals;
    }

    static bool IsPending() noexcept {
        sigset_t pending;
        sigemptyset(&pending);
        sigpending(&pending);
        return sigismember(&pending, SIGXFSZ) == 1;
    }

    sigset_t fBefore; // the thread's signal mask
    bool fWasPending;
};

} // namespace platform
