#include "host/save/FolderLock.h"

#include "pdfsettings/SafeSave.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <linux/magic.h>
#include <sys/file.h>
#include <sys/vfs.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace pdfsettings::detail {

namespace {

constexpr std::chrono::milliseconds kLongestPause(20);

// Not all systems' headers have these.
constexpr unsigned long kCifsMagic = 0xFF534D42;
constexpr unsigned long kSmb2Magic = 0xFE534D42;
constexpr unsigned long kCephMagic = 0x00C36400;

constexpr unsigned long kNetworkMagics[] = {
    NFS_SUPER_MAGIC,
    SMB_SUPER_MAGIC,
    AFS_SUPER_MAGIC,
    AFS_FS_MAGIC,
    CODA_SUPER_MAGIC,
    V9FS_MAGIC,
    kCifsMagic,
    kSmb2Magic,
    kCephMagic};

// The folders that this thread has locked.
thread_local std::vector<struct stat> gHeldFolders;

auto FindHeld(struct stat const& folder) {
    return std::ranges::find_if(
        gHeldFolders, [&](struct stat const& held) { return IsSameFile(held, folder); });
}

} // namespace

bool Deadline::Pause() {
    auto const now = std::chrono::steady_clock::now();
    if (now >= fEnd) {
        return false;
    }
    std::this_thread::sleep_until(std::min(now + fPause, fEnd));
    fPause = std::min(2 * fPause, kLongestPause);
    return true;
}

bool IsOnNetwork(Descriptor const& file) noexcept {
    struct statfs status {};
    if (fstatfs(file.Number(), &status) != 0) {
        return false;
    }
    auto const magic = static_cast<unsigned long>(status.f_type) & 0xFFFFFFFF;
    return std::ranges::find(kNetworkMagics, magic) != std::end(kNetworkMagics);
}

FolderLock::FolderLock(Target const& target, Deadline deadline) {
    if (!target.isReadable) {
        fWarning = "its folder may not be read, so other programs are not kept out";
        return;
    }
    fFolder = StatusOf(target.folder);
    // All that could fail comes before the lock is taken.
    if (IsOnNetwork(target.folder)) {
        fWarning =
            "it lies on a network file system, so programs on other machines are not kept out";
    }
    if (FindHeld(fFolder) == gHeldFolders.end()) {
        gHeldFolders.reserve(gHeldFolders.size() + 1);
        Take(target, deadline);
    }
}

void FolderLock::Take(Target const& target, Deadline deadline) {
    while (flock(target.folder.Number(), LOCK_EX | LOCK_NB) != 0) {
        if (errno == ENOLCK || errno == EOPNOTSUPP || errno == ENOSYS) {
            fWarning = "its folder cannot be locked, so other programs are not kept out";
            return;
        }
        if (errno != EWOULDBLOCK && errno != EINTR) {
            ThrowSystemError(errno);
        }
        if (!deadline.Pause()) {
            throw BusyError("another program is changing files in its folder; try again");
        }
    }
    gHeldFolders.push_back(fFolder);
    fNumber = target.folder.Number();
    fProcess = getpid();
}

// A child process may have a copy of the descriptor, so closing it would not be enough; and the
// child must not end the lock of its parent.
FolderLock::~FolderLock() {
    if (fNumber >= 0 && fProcess == getpid()) {
        gHeldFolders.erase(FindHeld(fFolder));
        flock(fNumber, LOCK_UN);
    }
}

} // namespace pdfsettings::detail
