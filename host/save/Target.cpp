#include "host/save/Target.h"

#include "pdfsettings/SafeSave.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <iterator>
#include <linux/magic.h>
#include <sys/file.h>
#include <sys/sysmacros.h>
#include <sys/vfs.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace pdfsettings::detail {

namespace {

// The maximum number of links on a path, as in the system.
constexpr int kMostLinks = 40;

constexpr mode_t kWritableByOthers = S_IWGRP | S_IWOTH;

// A position on a path: a folder, the name of an item in it, and the item. Without a name it is the
// folder itself; without an open item, the name does not exist.
struct Place {
    Descriptor fFolder;
    std::string fName;
    Descriptor fItem;
    bool fIsDescriptor = false;
};

// The names of the first three descriptors.
constexpr std::string_view kStreams[] = {"/dev/stdin", "/dev/stdout", "/dev/stderr"};

Descriptor OpenFolder(char const* path) {
    return Opened(open(path, O_PATH | O_DIRECTORY | O_CLOEXEC));
}

Descriptor Parent(Descriptor const& folder) {
    return Opened(openat(folder.Number(), "..", O_PATH | O_DIRECTORY | O_CLOEXEC));
}

Descriptor Duplicate(int number) {
    return Opened(fcntl(number, F_DUPFD_CLOEXEC, 0));
}

// Opens an item without following it, as a folder first: that mounts a file system that is mounted
// on demand.
Descriptor OpenItem(Descriptor const& folder, std::string const& name) {
    Descriptor item = OpenIn(folder, name, O_PATH | O_DIRECTORY);
    if (!item.IsOpen() && (errno == ENOTDIR || errno == ELOOP)) {
        item = OpenIn(folder, name, O_PATH);
    }
    return item;
}

std::string TextOf(Descriptor const& link) {
    char text[PATH_MAX];
    ssize_t const size = readlinkat(link.Number(), "", text, sizeof text);
    ThrowIfNegative(size);
    return {text, static_cast<std::size_t>(size)};
}

uid_t OwnerOf(Place const& place) {
    return StatusOf(place.fItem.IsOpen() ? place.fItem : place.fFolder).st_uid;
}

bool IsOurs(uid_t owner) {
    return owner == 0 || owner == geteuid();
}

bool IsTrusted(struct stat const& link, struct stat const& folder, uid_t ownerOfEnd) {
    if (link.st_uid == ownerOfEnd) {
        return true;
    }
    return IsOurs(link.st_uid) && link.st_nlink == 1 && IsOurs(folder.st_uid) &&
           (folder.st_mode & kWritableByOthers) == 0;
}

// Resolves a path and its links. Each step opens the next item relative to the folder before it, so
// the result does not depend on later changes of the path.
class Walk {
public:
    // The item that path leads to, from start if path is relative. shown: the path of start for
    // messages.
    Place Go(Descriptor start, std::string_view path, std::string shown) {
        Place place;
        bool const isFolder = path.ends_with('/');
        place.fFolder = path.starts_with('/') ? OpenFolder("/") : std::move(start);
        if (path.starts_with('/')) {
            shown = "/";
            path.remove_prefix(std::min(path.find_first_not_of('/'), path.size()));
        }
        while (!path.empty()) {
            std::size_t const end = std::min(path.find('/'), path.size());
            std::string const name(path.substr(0, end));
            bool const isLast = end == path.size();
            path.remove_prefix(std::min(end + 1, path.size()));
            Enter(place);
            Step(place, name, shown);
            shown += name + (isLast ? "" : "/");
        }
        if (isFolder) {
            Enter(place);
        }
        return place;
    }

private:
    // Makes the item the folder for the next step, which fails if the item is a file.
    static void Enter(Place& place) {
        if (place.fName.empty() && !place.fIsDescriptor) {
            return;
        }
        if (!place.fItem.IsOpen()) {
            ThrowSystemError(ENOENT);
        }
        place.fFolder = std::move(place.fItem);
        place.fItem = Descriptor();
        place.fName.clear();
        place.fIsDescriptor = false;
    }

    void Step(Place& place, std::string const& name, std::string const& shown) {
        if (name.empty() || name == ".") {
            return;
        }
        if (name == "..") {
            place.fFolder = Parent(place.fFolder);
            return;
        }
        place.fName = name;
        place.fItem = OpenItem(place.fFolder, name);
        if (!place.fItem.IsOpen() && errno != ENOENT) {
            ThrowSystemError(errno);
        }
        if (place.fItem.IsOpen() && S_ISLNK(StatusOf(place.fItem).st_mode)) {
            place = Follow(place, shown);
        }
    }

    Place Follow(Place const& link, std::string const& shown) {
        if (++fLinks > kMostLinks) {
            ThrowSystemError(ELOOP);
        }
        std::string const text = TextOf(link.fItem);
        Place end = NamesDescriptor(text) ? AtDescriptor(text)
                                          : Go(Duplicate(link.fFolder.Number()), text, shown);
        if (!IsTrusted(StatusOf(link.fItem), StatusOf(link.fFolder), OwnerOf(end))) {
            throw Error(
                Fault::kUntrusted,
                "the link " + shown + link.fName +
                    " is not followed: it belongs to another user than its target");
        }
        return end;
    }

    static Place AtDescriptor(std::string const& path) {
        Place place;
        place.fItem = DuplicateNamed(path);
        place.fIsDescriptor = true;
        return place;
    }

    int fLinks = 0;
};

Target AtStream(Descriptor stream) {
    Target target;
    target.stream = std::move(stream);
    return target;
}

} // namespace

void RequireWhole(std::string const& path) {
    if (path.find('\0') != std::string::npos) {
        throw Error(Fault::kSystem, "the path holds a NUL byte");
    }
}

bool NamesDescriptor(std::string_view path) noexcept {
    constexpr std::string_view kFolders[] = {"/dev/fd/", "/proc/self/fd/"};
    auto const isNumbered = [path](std::string_view folder) {
        return path.starts_with(folder) && path.size() > folder.size() &&
               path.find_first_not_of("0123456789", folder.size()) == std::string_view::npos;
    };
    return std::ranges::find(kStreams, path) != std::end(kStreams) ||
           std::ranges::any_of(kFolders, isNumbered);
}

Descriptor DuplicateNamed(std::string const& path) {
    auto const stream = std::ranges::find(kStreams, path);
    long const number = stream != std::end(kStreams)
                            ? stream - std::begin(kStreams)
                            : std::strtol(path.c_str() + path.rfind('/') + 1, nullptr, 10);
    return Duplicate(static_cast<int>(std::min(number, long{INT_MAX})));
}

bool IsNullDevice(struct stat const& status) noexcept {
    return S_ISCHR(status.st_mode) && major(status.st_rdev) == 1 && minor(status.st_rdev) == 3;
}

Target FolderOf(std::string const& path) {
    std::string const folder = FolderPart(path);
    Target target;
    target.folder = Descriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    target.isReadable = target.folder.IsOpen();
    if (!target.isReadable) {
        target.folder = Descriptor(open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    }
    return target;
}

Target FindTarget(std::string const& path) {
    RequireWhole(path);
    if (path.empty()) {
        ThrowSystemError(ENOENT);
    }
    if (NamesDescriptor(path)) {
        return AtStream(DuplicateNamed(path));
    }
    Place place = Walk().Go(path.starts_with('/') ? Descriptor() : OpenFolder("."), path, "");
    if (place.fIsDescriptor || (place.fItem.IsOpen() && IsNullDevice(StatusOf(place.fItem)))) {
        return AtStream(std::move(place.fItem));
    }
    if (place.fName.empty()) {
        ThrowSystemError(S_ISDIR(StatusOf(place.fFolder).st_mode) ? EISDIR : ENOTDIR);
    }
    Target target;
    target.name = std::move(place.fName);
    target.folder =
        Descriptor(openat(place.fFolder.Number(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    target.isReadable = target.folder.IsOpen();
    if (!target.isReadable) {
        target.folder = std::move(place.fFolder);
    }
    return target;
}

namespace {

constexpr std::chrono::milliseconds kLongestPause(20);

// Some system headers do not define these.
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

} // namespace

// A locked folder, with a descriptor of its own.
struct HeldFolder {
    explicit HeldFolder(Descriptor folder)
        : fFolder(std::move(folder)),
          fStatus(StatusOf(fFolder)) {}
    HeldFolder(HeldFolder const&) = delete;
    HeldFolder& operator=(HeldFolder const&) = delete;

    // Unlocks explicitly: a child process may have a copy of the descriptor, so closing it would
    // not unlock the folder. The child itself must not end the lock of its parent.
    ~HeldFolder() {
        if (fIsLocked && fProcess == getpid()) {
            flock(fFolder.Number(), LOCK_UN);
        }
    }

    Descriptor fFolder;
    struct stat fStatus;
    pid_t fProcess = getpid();
    bool fIsLocked = false;
};

namespace {

// The folders that this thread has locked.
thread_local std::vector<std::weak_ptr<HeldFolder>> gHeldFolders;

std::shared_ptr<HeldFolder> FindHeld(struct stat const& folder) {
    std::erase_if(gHeldFolders, [](auto const& held) { return held.expired(); });
    for (auto const& weak : gHeldFolders) {
        auto held = weak.lock();
        if (held != nullptr && IsSameFile(held->fStatus, folder)) {
            return held;
        }
    }
    return nullptr;
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
        fWarning = "its folder may not be read: other programs are not locked out";
        return;
    }
    if (IsOnNetwork(target.folder)) {
        fWarning = "it is on a network file system: programs on other machines are not locked out";
    }
    fHeld = FindHeld(StatusOf(target.folder));
    if (fHeld == nullptr) {
        // Everything that may fail comes before the lock is taken.
        gHeldFolders.reserve(gHeldFolders.size() + 1);
        fHeld =
            std::make_shared<HeldFolder>(Opened(fcntl(target.folder.Number(), F_DUPFD_CLOEXEC, 0)));
        Take(deadline);
        gHeldFolders.push_back(fHeld);
    }
}

FolderLock::~FolderLock() = default;

void FolderLock::Take(Deadline deadline) {
    while (flock(fHeld->fFolder.Number(), LOCK_EX | LOCK_NB) != 0) {
        if (errno == ENOLCK || errno == EOPNOTSUPP || errno == ENOSYS) {
            fWarning = "its folder cannot be locked: other programs are not locked out";
            return;
        }
        if (errno != EWOULDBLOCK && errno != EINTR) {
            ThrowSystemError(errno);
        }
        if (!deadline.Pause()) {
            throw Error(Fault::kBusy, "another program is changing files in its folder; try again");
        }
    }
    fHeld->fIsLocked = true;
}

} // namespace pdfsettings::detail
