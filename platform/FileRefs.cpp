// Items, paths and what is known of an item.
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>

#include "platform/FileManager.h"
#include "platform/FileNames.h"
#include "platform/FileStatus.h"
#include "platform/SystemErrors.h"

using platform::AtService;
using platform::FileStatus;

namespace {

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

OSErr FSPathMakeRef(UInt8 const* path, FSRef* ref, Boolean* isDirectory) noexcept {
    return AtService([=] {
        std::string found(reinterpret_cast<char const*>(path));
        FileStatus status;
        OSErr const error = status.Read(found);
        if (error != noErr) {
            return error;
        }
        *ref = {std::move(found)};
        if (isDirectory != nullptr) {
            *isDirectory = status.IsDirectory() ? 1 : 0;
        }
        return error;
    });
}

OSErr FSRefMakePath(FSRef const* ref, UInt8* path, UInt32 size) noexcept {
    if (ref->path.size() >= size) {
        return bdNamErr;
    }
    std::memcpy(path, ref->path.c_str(), ref->path.size() + 1);
    return noErr;
}

OSErr FSMakeFSRefUnicode(
    FSRef const* parent,
    UniCharCount nameLength,
    UniChar const* name,
    UInt32 /*textEncodingHint*/,
    FSRef* newRef) noexcept {
    return AtService([=] {
        std::string path;
        OSErr error = platform::ChildPath(*parent, nameLength, name, &path);
        FileStatus status;
        if (error == noErr) {
            error = status.Read(path);
        }
        if (error == noErr) {
            *newRef = {std::move(path)};
        }
        return error;
    });
}

OSErr FSGetCatalogInfo(
    FSRef const* ref,
    FSCatalogInfoBitmap whichInfo,
    FSCatalogInfo* catalogInfo,
    HFSUniStr255* outName,
    void* fsSpec,
    FSRef* parentRef) noexcept {
    if (outName != nullptr || fsSpec != nullptr || parentRef != nullptr) {
        return paramErr;
    }
    FileStatus status;
    if (OSErr const error = status.Read(ref->path); error != noErr) {
        return error;
    }
    if ((whichInfo & kFSCatInfoNodeFlags) != 0) {
        catalogInfo->nodeFlags = static_cast<UInt16>(
            (status.IsLocked() ? kFSNodeLockedMask : 0) |
            (status.IsDirectory() ? kFSNodeIsDirectoryMask : 0));
    }
    if ((whichInfo & kFSCatInfoContentMod) != 0) {
        catalogInfo->contentModDate = ToUTCDateTime(status.ContentModification());
    }
    return noErr;
}
