// Where a save goes, and one change at a time there: the lock on its folder, and waiting for
// others, up to a limit.
#pragma once

#include "host/save/SystemCalls.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>
#include <string_view>

namespace pdfsettings::detail {

// The file that a path leads to, whether it exists or not: its folder, opened once, and its name in
// it. All that a save does goes through that descriptor, so nobody can move it elsewhere by
// exchanging what lies on the way.
struct Target {
    Descriptor folder;
    // Whether the folder can be locked, listed and flushed; otherwise it is open as a path only.
    bool isReadable = false;
    std::string name;
    // Where the path names the null device or a descriptor of this process: that, and no folder.
    Descriptor stream;

    bool IsStream() const noexcept { return stream.IsOpen(); }
};

// Follows path. A link on the way is followed only where no other user can have planted it: it
// belongs to the owner of what it leads to, or it belongs to root or to the effective user, has one
// name, and lies in a folder that nobody else owns or may write to. Throws Error (kUntrusted) for
// another one, and Error with the system's reason.
Target FindTarget(std::string const& path);

// The folder that path itself lies in, for a lock on it: the last link is not followed. Without an
// open folder where there is none.
Target FolderOf(std::string const& path);

// Throws Error for a path with a NUL byte, which would end it before its end.
void RequireWhole(std::string const& path);

// Whether path names a descriptor of this process, which is a stream even if a file is behind it.
bool NamesDescriptor(std::string_view path) noexcept;

// A copy of the descriptor that path names, with its place and its rights: opening it anew would
// begin at the start of a file, and wait for the other end of a pipe. Throws Error. REQUIRES:
// NamesDescriptor(path).
Descriptor DuplicateNamed(std::string const& path);

// Whether the file is the null device.
bool IsNullDevice(struct stat const& status) noexcept;

// The end of a waiting, and its pauses, which grow from one to twenty milliseconds.
class Deadline {
public:
    explicit Deadline(std::chrono::milliseconds limit)
        : fEnd(std::chrono::steady_clock::now() + std::min(limit, kLongest)) {}

    // Sleeps until the next attempt; false, at once, when the time is over.
    bool Pause();

private:
    // No clock has an end for the longest duration.
    static constexpr std::chrono::milliseconds kLongest = std::chrono::hours(24 * 365);

    std::chrono::steady_clock::time_point fEnd;
    std::chrono::milliseconds fPause{1};
};

struct HeldFolder;

// The lock on the folder of a target, held as long as this lives. It lies on the folder and not on
// the file: so it is there before the file is, survives its replacement, and leaves nothing behind.
// A thread that holds the lock gets it again.
class FolderLock {
public:
    // Waits for other threads and programs. Throws Error (kBusy) when the time is over, and Error.
    // REQUIRES: target has a folder.
    FolderLock(Target const& target, Deadline deadline);
    ~FolderLock();
    FolderLock(FolderLock const&) = delete;
    FolderLock& operator=(FolderLock const&) = delete;

    // Who is not kept out, and why; empty when all are who take the lock.
    std::string const& Warning() const noexcept { return fWarning; }

private:
    void Take(Deadline deadline);

    std::shared_ptr<HeldFolder> fHeld; // by all locks of the thread on the folder
    std::string fWarning;
};

// Whether other machines may change files of the same file system.
bool IsOnNetwork(Descriptor const& file) noexcept;

} // namespace pdfsettings::detail
