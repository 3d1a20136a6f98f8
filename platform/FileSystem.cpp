#include "platform/FileSystem.h"

#include "platform/Encodings.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>

namespace platform {

OSErr CodeOf(int error) noexcept {
    switch (error) {
    case 0:
        return noErr;
    case ENOENT:
    case ELOOP:
    case ESTALE:
        return fnfErr;
    case ENOTDIR:
        return dirNFErr;
    case EEXIST:
        return dupFNErr;
    case ENAMETOOLONG:
    case EILSEQ:
        return bdNamErr;
    case EACCES:
    case EPERM:
    case EROFS:
        return afpAccessDenied;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        return dskFulErr;
    case EINVAL:
    case EBADF:
        return paramErr;
    default:
        return ioErr;
    }
}

OSErr CodeOfResult(long result) noexcept {
    return result < 0 ? CodeOf(errno) : noErr;
}

namespace {

constexpr std::size_t kLongestName = 255; // in bytes

// Whether the name is valid for a file.
bool IsUsable(std::string const& name) noexcept {
    return !name.empty() && name.size() <= kLongestName && name.find('\0') == std::string::npos &&
           name.find('/') == std::string::npos;
}

// From 1904-01-01 to 1970-01-01: 66 years with 17 leap days.
constexpr std::uint64_t kSecondsToUnixEpoch = (66ULL * 365 + 17) * 24 * 60 * 60;

UTCDateTime ToUTCDateTime(statx_timestamp const& time) noexcept {
    std::uint64_t const seconds = static_cast<std::uint64_t>(time.tv_sec) + kSecondsToUnixEpoch;
    std::uint64_t const fraction = std::uint64_t{time.tv_nsec} * 65536 / 1000000000;
    return {
        static_cast<UInt16>(seconds >> 32),
        static_cast<UInt32>(seconds),
        static_cast<UInt16>(fraction)};
}

} // namespace

OSErr FileStatus::Read(std::string const& path) noexcept {
    return Read(AT_FDCWD, path.c_str());
}

OSErr FileStatus::Read(int folder, char const* name) noexcept {
    constexpr unsigned kWanted = STATX_TYPE | STATX_MODE | STATX_MTIME | STATX_UID | STATX_GID;
    int result = statx(folder, name, 0, kWanted, &fStatus);
    // Only if the link has no target. If the target exists but cannot be examined, its permissions
    // are unknown, so the call fails.
    if (result < 0 && (errno == ENOENT || errno == ELOOP || errno == ENOTDIR)) {
        result = statx(folder, name, AT_SYMLINK_NOFOLLOW, kWanted, &fStatus);
    }
    return CodeOfResult(result);
}

void FileStatus::CopyTo(FSCatalogInfoBitmap whichInfo, FSCatalogInfo* info) const noexcept {
    if ((whichInfo & kFSCatInfoNodeFlags) != 0) {
        info->nodeFlags = static_cast<UInt16>(
            (IsLocked() ? kFSNodeLockedMask : 0) | (IsDirectory() ? kFSNodeIsDirectoryMask : 0));
    }
    if ((whichInfo & kFSCatInfoContentMod) != 0) {
        info->contentModDate = ToUTCDateTime(fStatus.stx_mtime);
    }
    if ((whichInfo & kFSCatInfoPermissions) != 0) {
        FSPermissionInfo permissions{};
        permissions.userID = fStatus.stx_uid;
        permissions.groupID = fStatus.stx_gid;
        permissions.mode = fStatus.stx_mode;
        std::memcpy(info->permissions, &permissions, sizeof permissions);
    }
}

int OpenPath(int folder, char const* path, int flags, mode_t mode) noexcept {
    int file = -1;
    do {
        file = openat(folder, path, flags | O_NOCTTY | O_CLOEXEC, mode);
    } while (file < 0 && errno == EINTR);
    return file;
}

bool DecodeName(char const* bytes, HFSUniStr255* name) noexcept {
    std::size_t const size = std::strlen(bytes);
    if (size > kLongestName) {
        return false;
    }
    auto const length = DecodeUtf8({bytes, size}, name->unicode);
    name->length = static_cast<UInt16>(length.value_or(0));
    return length.has_value();
}

OSErr EncodeName(UniCharCount nameLength, UniChar const* name, std::string* bytes) {
    // A name never has fewer bytes than units.
    if (nameLength == 0 || nameLength > kLongestName) {
        return bdNamErr;
    }
    auto encoded = EncodeUtf8({name, nameLength});
    if (!encoded || !IsUsable(*encoded)) {
        return bdNamErr;
    }
    *bytes = std::move(*encoded);
    return noErr;
}

std::string ChildPath(FSRef const& parent, std::string const& name) {
    bool const endsInSlash = !parent.path.empty() && parent.path.back() == '/';
    return parent.path + (endsInSlash ? "" : "/") + name;
}

} // namespace platform
