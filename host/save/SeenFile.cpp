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

// The labels by which security modules know a file. Other attributes of that kind give rights to
// contents (capabilities) or vouch for them (ima, evm).
constexpr std::string_view kLabels[] = {"security.selinux", "security.SMACK64"};

bool IsKept(std::string_view attribute) {
    return attribute.starts_with("user.") ||
           std::ranges::find(kLabels, attribute) != std::end(kLabels);
}

// An answer of the system whose size is asked for first; it may grow in between.
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

// The value of an attribute; empty where the file has none of that name.
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

// The names of all attributes of a file, a zero byte behind each.
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

// Network file systems have lists of their own.
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

// Takes all permissions from the owning group's entry, and from everybody else's what the group did
// not have: its members are among them now. The form is the system's: a version and entries of a
// tag, permissions and an id, 16, 16 and 32 bits each, the low byte first
// (linux/posix_acl_xattr.h).
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
        case kMask: // cuts the group's entry too
            kept = static_cast<char>(kept & permissions);
            break;
        case kOthers: // stands last
            permissions = static_cast<char>(permissions & kept);
            break;
        default:
            break;
        }
    }
}

// What everybody else's entry, the last one, allows.
mode_t OthersIn(std::string const& accessList) {
    constexpr std::size_t kFromEnd = 6;
    return accessList.size() < kFromEnd
               ? 0
               : static_cast<mode_t>(accessList[accessList.size() - kFromEnd]) & S_IRWXO;
}

// The same for a file whose mode says it all.
mode_t WithoutOwningGroup(mode_t mode) {
    mode_t const others = (mode & S_IRWXG) >> 3;
    return mode & ~mode_t{S_IRWXG} & (~mode_t{S_IRWXO} | others);
}

// Moves traits to a file and notes what could not be moved.
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
    // Only root can give a file away, but others can give it to their groups.
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
            fWarnings.emplace_back("its owner could not be kept: it is yours now");
        }
        if (!isInGroup) {
            fWarnings.emplace_back("its group could not be kept: the group's permissions are gone");
            CutOwningGroup(&fAccessList);
            fMode = fTraits.accessList.empty() ? WithoutOwningGroup(fMode)
                                               : (fMode & ~mode_t{S_IRWXO}) | OthersIn(fAccessList);
        }
    }

    // A new file may have got a list from its folder, which the old one did not have. Where a list
    // cannot be had, nobody but the owner may do anything: a list can refuse to one what the mode
    // allows to all.
    void GiveAccessList() {
        int const result =
            fAccessList.empty()
                ? fremovexattr(fFile.Number(), kAccessList)
                : fsetxattr(fFile.Number(), kAccessList, fAccessList.data(), fAccessList.size(), 0);
        bool const hasNone = fAccessList.empty() && (errno == ENODATA || IsUnsupported(errno));
        if ((result != 0 && !hasNone) || fTraits.hasForeignList) {
            fMode &= kOwnerPermissions;
            fWarnings.emplace_back(
                "its access control list could not be kept: it is for its owner alone");
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

// Those of an open file. Throws Error.
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

// Asks whether the caller may write the file, with the rights of the effective user. 0, or errno.
int AskToWrite(Descriptor const& file, Descriptor const& folder, std::string const& name) {
    int result = faccessat(file.Number(), "", W_OK, AT_EACCESS | AT_EMPTY_PATH);
    // An older system does not know the flag for an open file, and a sandbox may refuse the call.
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
    // What is no file is not opened at all: a device may start its work.
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

bool SeenFile::StandsAt(Descriptor const& folder, std::string const& name) const {
    struct stat status {};
    return Examine(folder, name, &status) && IsSameFile(status, fStatus) &&
           ReadTraits(fFile) == fTraits && ReadAll(fFile) == fBytes;
}

// The system gives a lease for reading only where nobody has the file open for writing. It is given
// up at once; should somebody open the file in that moment, the signal for it is one that a program
// without a handler ignores, unlike the usual SIGIO, which would end it.
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
