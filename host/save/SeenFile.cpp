#include "host/save/SeenFile.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <sys/xattr.h>
#include <system_error>
#include <unistd.h>

namespace pdfsettings::detail {

namespace {

constexpr mode_t kKeptPermissions = 01777;
constexpr mode_t kOwnerPermissions = 01700;
constexpr uid_t kSameOwner = static_cast<uid_t>(-1);

constexpr char kAccessList[] = "system.posix_acl_access";

// The labels of security modules. Other security attributes grant rights to contents (capabilities)
// or certify them (ima, evm).
constexpr std::string_view kLabels[] = {"security.selinux", "security.SMACK64"};

bool IsKept(std::string_view attribute) {
    return attribute.starts_with("user.") ||
           std::ranges::find(kLabels, attribute) != std::end(kLabels);
}

// Makes a system call whose result has a variable size: asks for the size first, and again if it
// has grown.
template <class Call>
ssize_t ReadSized(std::string* answer, Call call) {
    ssize_t size = 0;
    do {
        size = call(nullptr, 0);
        if (size <= 0) {
            return size;
        }
        answer->resize(static_cast<std::size_t>(size));
        size = call(answer->data(), answer->size());
    } while (size < 0 && errno == ERANGE);
    return size;
}

// The value of an attribute; empty if the file does not have it.
std::string ReadAttribute(Descriptor const& file, char const* name) {
    std::string value;
    ssize_t const size = ReadSized(&value, [&](char* buffer, std::size_t room) {
        return fgetxattr(file.Number(), name, buffer, room);
    });
    if (size < 0 && errno != ENODATA && !IsUnsupported(errno)) {
        ThrowSystemError(errno);
    }
    value.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    return value;
}

// The names of all attributes of a file, each with a terminating zero.
std::string ReadNames(Descriptor const& file) {
    std::string names;
    ssize_t const size = ReadSized(&names, [&](char* buffer, std::size_t room) {
        return flistxattr(file.Number(), buffer, room);
    });
    if (size < 0 && !IsUnsupported(errno)) {
        ThrowSystemError(errno);
    }
    names.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    return names;
}

// Network file systems have access control lists of their own kinds.
bool IsForeignList(std::string_view attribute) {
    return attribute.starts_with("system.") && attribute.find("acl") != std::string_view::npos &&
           !attribute.starts_with("system.posix_acl");
}

void ReadAttributes(Descriptor const& file, FileTraits* traits) {
    std::string const names = ReadNames(file);
    for (std::size_t at = 0; at < names.size(); at += std::strlen(&names[at]) + 1) {
        if (IsKept(&names[at])) {
            traits->attributes.emplace_back(&names[at], ReadAttribute(file, &names[at]));
        }
        traits->hasForeignList = traits->hasForeignList || IsForeignList(&names[at]);
    }
    std::ranges::sort(traits->attributes);
}

// Removes all permissions from the owning group's entry, and from the entry for others those that
// the group did not have, because the group's members are among the others now. The format is the
// system's: a version, then entries of a tag, permissions and an id, of 16, 16 and 32 bits, little
// endian (linux/posix_acl_xattr.h).
void CutOwningGroup(std::string* accessList) {
    constexpr std::size_t kHeader = 4;
    constexpr std::size_t kEntry = 8;
    constexpr char kOwningGroup = 0x04;
    constexpr char kMask = 0x10;
    constexpr char kOthers = 0x20;
    char kept = 0;
    for (std::size_t at = kHeader; at + kEntry <= accessList->size(); at += kEntry) {
        char& permissions = (*accessList)[at + 2];
        switch ((*accessList)[at]) {
        case kOwningGroup:
            kept = std::exchange(permissions, 0);
            break;
        case kMask: // the mask limits the group's entry too
            kept = static_cast<char>(kept & permissions);
            break;
        case kOthers: // the last entry
            permissions = static_cast<char>(permissions & kept);
            break;
        default:
            break;
        }
    }
}

// The permissions of the entry for others, which is the last one.
mode_t OthersIn(std::string const& accessList) {
    constexpr std::size_t kFromEnd = 6;
    return accessList.size() < kFromEnd
               ? 0
               : static_cast<mode_t>(accessList[accessList.size() - kFromEnd]) & S_IRWXO;
}

// As CutOwningGroup, for a file without an access control list.
mode_t WithoutOwningGroup(mode_t mode) {
    mode_t const others = (mode & S_IRWXG) >> 3;
    return mode & ~mode_t{S_IRWXG} & (~mode_t{S_IRWXO} | others);
}

// Gives traits to a file and collects a warning for each that could not be given.
class Transfer {
public:
    Transfer(FileTraits const& traits, Descriptor const& file)
        : fTraits(traits),
          fFile(file),
          fMode(traits.mode),
          fAccessList(traits.accessList) {}

    std::vector<std::string> Run() {
        GiveOwner();
        GiveAccessList();
        GiveAttributes();
        ThrowIfNegative(fchmod(fFile.Number(), fMode));
        return std::move(fWarnings);
    }

private:
    // Only root can change the owner; other users can choose among their own groups.
    void GiveOwner() {
        struct stat const status = StatusOf(fFile);
        bool isOwned = status.st_uid == fTraits.owner;
        bool isInGroup = status.st_gid == fTraits.group;
        if (!isOwned || !isInGroup) {
            bool const isGiven = fchown(fFile.Number(), fTraits.owner, fTraits.group) == 0;
            isInGroup =
                isInGroup || isGiven || fchown(fFile.Number(), kSameOwner, fTraits.group) == 0;
            isOwned = isOwned || isGiven;
        }
        if (!isOwned) {
            fWarnings.emplace_back("its owner could not be kept: you own it now");
        }
        if (!isInGroup) {
            fWarnings.emplace_back(
                "its group could not be kept: the group's permissions were removed");
            CutOwningGroup(&fAccessList);
            fMode = fTraits.accessList.empty() ? WithoutOwningGroup(fMode)
                                               : (fMode & ~mode_t{S_IRWXO}) | OthersIn(fAccessList);
        }
    }

    // A new file may have inherited a list from its folder that the old file did not have. If the
    // list cannot be set, only the owner keeps permissions: a list may deny to one user what the
    // mode allows to all.
    void GiveAccessList() {
        int const result =
            fAccessList.empty()
                ? fremovexattr(fFile.Number(), kAccessList)
                : fsetxattr(fFile.Number(), kAccessList, fAccessList.data(), fAccessList.size(), 0);
        bool const hasNone = fAccessList.empty() && (errno == ENODATA || IsUnsupported(errno));
        if ((result != 0 && !hasNone) || fTraits.hasForeignList) {
            fMode &= kOwnerPermissions;
            fWarnings.emplace_back(
                "its access control list could not be kept: only its owner has access now");
        }
    }

    void GiveAttributes() {
        for (auto const& [name, value] : fTraits.attributes) {
            if (fsetxattr(fFile.Number(), name.c_str(), value.data(), value.size(), 0) != 0) {
                fWarnings.push_back("its attribute " + name + " could not be kept");
            }
        }
    }

    FileTraits const& fTraits;
    Descriptor const& fFile;
    mode_t fMode;
    std::string fAccessList;
    std::vector<std::string> fWarnings;
};

// The traits of an open file. Throws Error.
FileTraits ReadTraits(Descriptor const& file) {
    struct stat const status = StatusOf(file);
    FileTraits traits;
    traits.mode = status.st_mode & kKeptPermissions;
    traits.owner = status.st_uid;
    traits.group = status.st_gid;
    traits.accessList = ReadAttribute(file, kAccessList);
    ReadAttributes(file, &traits);
    return traits;
}

// Whether the effective user may write the file: 0, or the errno value.
int AskToWrite(Descriptor const& file, Descriptor const& folder, std::string const& name) {
    int result = faccessat(file.Number(), "", W_OK, AT_EACCESS | AT_EMPTY_PATH);
    // Older systems do not support this flag, and a sandbox may reject the call.
    if (result != 0 && (IsUnsupported(errno) || errno == EPERM)) {
        result = faccessat(folder.Number(), name.c_str(), W_OK, AT_EACCESS | AT_SYMLINK_NOFOLLOW);
    }
    return result == 0 ? 0 : errno;
}

} // namespace

std::vector<std::string> GiveTraits(FileTraits const& traits, Descriptor const& file) {
    return Transfer(traits, file).Run();
}

std::optional<SeenFile>
SeenFile::Open(Descriptor const& folder, std::string const& name, Deadline deadline) {
    // Tests the type before opening the file: opening a device may start an operation.
    struct stat status {};
    if (!Examine(folder, name, &status)) {
        if (errno != ENOENT) {
            ThrowSystemError(errno);
        }
        return std::nullopt;
    }
    RequireRegular(status);
    Descriptor file =
        OpenWithoutWaiting(deadline, [&] { return OpenIn(folder, name, kReadingAtOnce); });
    ThrowIfNegative(file.Number());
    RequireRegular(StatusOf(file));
    return SeenFile(std::move(file));
}

SeenFile::SeenFile(Descriptor file)
    : fFile(std::move(file)),
      fBytes(ReadAll(fFile)),
      fTraits(ReadTraits(fFile)),
      fStatus(StatusOf(fFile)),
      fCanHaveLease(!IsOnNetwork(fFile)) {}

void SeenFile::RequireWritable(Descriptor const& folder, std::string const& name) const {
    if ((fTraits.mode & S_IWUSR) == 0) {
        throw Error(Fault::kReadOnly, "read-only");
    }
    int const error = AskToWrite(fFile, folder, name);
    if (error == EACCES || error == EPERM || error == EROFS) {
        throw Error(Fault::kReadOnly, "read-only: " + std::generic_category().message(error));
    }
    if (error != 0) {
        ThrowSystemError(error);
    }
}

bool SeenFile::IsAt(Descriptor const& folder, std::string const& name) const {
    struct stat status {};
    return Examine(folder, name, &status) && IsSameFile(status, fStatus) &&
           ReadTraits(fFile) == fTraits && ReadAll(fFile) == fBytes;
}

// The system grants a read lease only if no process has the file open for writing. The lease is
// released at once. If a process opens the file just then, the system sends a signal: SIGURG, which
// is ignored by default, in place of SIGIO, which would end the process.
bool SeenFile::HasWriter() const {
    if (!fCanHaveLease) {
        return false;
    }
    fcntl(fFile.Number(), F_SETSIG, SIGURG);
    if (fcntl(fFile.Number(), F_SETLEASE, F_RDLCK) == 0) {
        fcntl(fFile.Number(), F_SETLEASE, F_UNLCK);
        return false;
    }
    return errno == EAGAIN;
}

} // namespace pdfsettings::detail
