// Writing up to the process's limit on the size of files.
#pragma once

#include <csignal>
#include <ctime>

namespace platform {

// Keeps the signal SIGXFSZ, which ends a process that does not care for it, from this thread as
// long as it lives: a write beyond the limit then only fails, with EFBIG.
class FileSizeSignalGuard {
public:
    FileSizeSignalGuard() noexcept : fBefore(), fWasPending(IsPending()) {
        sigset_t const signals = TheSignal();
        pthread_sigmask(SIG_BLOCK, &signals, &fBefore);
    }
    FileSizeSignalGuard(FileSizeSignalGuard const&) = delete;
    FileSizeSignalGuard& operator=(FileSizeSignalGuard const&) = delete;

    // A signal that came meanwhile is taken, so that it does not come when it is let through again.
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
