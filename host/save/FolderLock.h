// One change at a time in a folder, and waiting for others, up to a limit.
#pragma once

#include "host/save/Target.h"

#include <chrono>
#include <string>

namespace pdfsettings::detail {

// The end of a waiting, and its pauses, which grow from one to twenty milliseconds.
class Deadline {
public:
    explicit Deadline(std::chrono::milliseconds limit)
        : fEnd(std::chrono::steady_clock::now() + limit) {}

    // Sleeps until the next attempt; false, at once, when the time is over.
    bool Pause();

private:
    std::chrono::steady_clock::time_point fEnd;
    std::chrono::milliseconds fPause{1};
};

// The lock on the folder of a target, held as long as this lives. It lies on the folder and not on
// the file: so it is there before the file is, survives its replacement, and leaves nothing behind.
// A thread that holds the lock gets it again.
class FolderLock {
public:
    // Waits for other threads and programs. Throws BusyError when the time is over, and Error.
    // REQUIRES: target has a folder, and its descriptor outlives this.
    FolderLock(Target const& target, Deadline deadline);
    ~FolderLock();
    FolderLock(FolderLock const&) = delete;
    FolderLock& operator=(FolderLock const&) = delete;

    // Who is not kept out, and why; empty when all are who take the lock.
    std::string const& Warning() const noexcept { return fWarning; }

private:
    void Take(Target const& target, Deadline deadline);

    struct stat fFolder {};
    int fNumber = -1; // of the locked descriptor; -1 when this locked nothing itself
    pid_t fProcess = 0;
    std::string fWarning;
};

// Whether other machines may change files of the same file system.
bool IsOnNetwork(Descriptor const& file) noexcept;

} // namespace pdfsettings::detail
