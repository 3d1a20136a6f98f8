// Writing up to the process's limit on the size of files.
#pragma once

#include <csignal>

namespace platform {

// Keeps the signal SIGXFSZ, which ends a process that does not care for it, from this thread as
// long as it lives: a write beyond the limit then only fails, with EFBIG.
class FileSizeSignalGuard {
public:
    FileSizeSignalGuard() noexcept;
    ~FileSizeSignalGuard();
    FileSizeSignalGuard(FileSizeSignalGuard const&) = delete;
    FileSizeSignalGuard& operator=(FileSizeSignalGuard const&) = delete;

private:
    sigset_t fBefore; // the thread's signal mask
    bool fWasPending;
};

} // namespace platform
