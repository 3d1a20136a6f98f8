#include "platform/FileSizeSignal.h"

#include <ctime>

namespace platform {

namespace {

sigset_t TheSignal() noexcept {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGXFSZ);
    return signals;
}

bool IsPending() noexcept {
    sigset_t pending;
    sigemptyset(&pending);
    sigpending(&pending);
    return sigismember(&pending, SIGXFSZ) == 1;
}

} // namespace

FileSizeSignalGuard::FileSizeSignalGuard() noexcept : fBefore(), fWasPending(IsPending()) {
    sigset_t const signals = TheSignal();
    pthread_sigmask(SIG_BLOCK, &signals, &fBefore);
}

// A signal that came meanwhile is taken, so that it does not come when it is let through again.
FileSizeSignalGuard::~FileSizeSignalGuard() {
    if (!fWasPending && IsPending()) {
        sigset_t const signals = TheSignal();
        timespec const now{};
        sigtimedwait(&signals, nullptr, &now);
    }
    pthread_sigmask(SIG_SETMASK, &fBefore, nullptr);
}

} // namespace platform
