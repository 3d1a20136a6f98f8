// The target of a save, the lock on its folder, and waiting for other programs up to a limit.
#pragma once

#include "host/save/SystemCalls.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>
#include <string_view>

namespace pdfsettings::detail {

// The file that a path leads to, which need not exist: its folder, opened once, and its name there.
// All steps of a save use this descriptor, so that replacing a folder or link on the path cannot
// redirect them.
struct Target {
    Descriptor folder;
    // Whether the folder can be locked, listed and flushed. If not, it is open for path lookup
    // only.
    bool isReadable = false;
    std::string name;
    // Open if the path names the null device or a descriptor of this process; then there is no
    // folder.
    Descriptor stream;

    bool IsStream() const noexcept { return stream.IsOpen(); }
};

// Resolves path. A link is followed only if no other user can have planted it: it has the same
// owner as the item that it leads to, or it belongs to root or the effective user, has a single
// name, and is in a folder that belongs to one of these and that no other user can write to. Throws
// Error (kUntrusted) for another link, and Error with the system's reason.
Target FindTarget(std::string const& path);

// The folder that path itself is in, for locking it: a link at the end of path is not followed. The
// folder is not open if it does not exist.
Target FolderOf(std::string const& path);

// Throws Error for a path with a zero byte, which would truncate it.
void RequireWhole(std::string const& path);

// Whether path names a descriptor of this process. It is a stream even if it refers to a file.
bool NamesDescriptor(std::string_view path) noexcept;

// A duplicate of the descriptor that path names, with its position and access mode. Opening the
// path again would begin at the start of a file, and would wait for the other end of a pipe. Throws
// Error. REQUIRES: NamesDescriptor(path).
Descriptor DuplicateNamed(std::string const& path);

// Whether the file is the null device.
bool IsNullDevice(struct stat const& status) noexcept;

// A time limit, and pauses between attempts that grow from one to twenty milliseconds.
class Deadline {
public:
    explicit Deadline(std::chrono::milliseconds limit)
        : fEnd(std::chrono::steady_clock::now() + std::min(limit, kLongest)) {}

    // Sleeps until the next attempt. Returns false immediately if the time is over.
    bool Pause();

private:
    // The longest duration would overflow the clock.
    static constexpr std::chrono::milliseconds kLongest = std::chrono::hours(24 * 365);

    std::chrono::steady_clock::time_point fEnd;
    std::chrono::milliseconds fPause{1};
};

struct HeldFolder;

// The lock on the folder of a target, released by the destructor. It is on the folder and not on
// the file, so that it can be taken before the file exists, survives the replacement of the file,
// and leaves no lock file. The lock is recursive within a thread.
class FolderLock {
public:
    // Waits for other threads and programs. Throws Error (kBusy) when the time is over, and Error.
    // REQUIRES: target has a folder.
    FolderLock(Target const& target, Deadline deadline);
    ~FolderLock();
    FolderLock(FolderLock const&) = delete;
    FolderLock& operator=(FolderLock const&) = delete;

    // Which programs are not excluded, and why; empty if all that take the lock are.
    std::string const& Warning() const noexcept { return fWarning; }

private:
    void Take(Deadline deadline);

    std::shared_ptr<HeldFolder> fHeld; // shared by all locks of the thread on this folder
    std::string fWarning;
};

// Whether other machines may change files of this file system.
bool IsOnNetwork(Descriptor const& file) noexcept;

} // namespace pdfsettings::detail
