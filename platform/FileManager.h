// The file service, as far as the component calls it.
//
// Names, types, values and result codes follow the service's own interface. Every call gives noErr
// or the code of its failure, in which case it has stored nothing. Names of files are counted
// UTF-16 units; one that is empty, longer than 255 bytes in UTF-8, no well-formed UTF-16, or holds
// a zero unit or a slash is bdNamErr, never cut short. No call keeps a descriptor but FSOpenFork
// and FSCreateFileUnicode. Safe across threads.
#pragma once

#include "platform/CFBase.h"

#include <cstdint>
#include <memory>
#include <string>

using SInt16 = std::int16_t;
using UInt16 = std::uint16_t;
using UInt32 = std::uint32_t;
using SInt64 = std::int64_t;
using UniCharCount = unsigned long;
using ByteCount = unsigned long;
using OSErr = SInt16;

// Result codes.
inline constexpr OSErr noErr = 0;
inline constexpr OSErr dskFulErr = -34;
inline constexpr OSErr ioErr = -36;
inline constexpr OSErr bdNamErr = -37;
inline constexpr OSErr fnfErr = -43;
inline constexpr OSErr fLckdErr = -45;
inline constexpr OSErr dupFNErr = -48;
inline constexpr OSErr paramErr = -50;
inline constexpr OSErr dirNFErr = -120;
inline constexpr OSErr errFSNoMoreItems = -1417;
inline constexpr OSErr afpAccessDenied = -5000;

namespace platform {
class CreatedFile;
}

// A file or folder. A copyable value that holds a path: no descriptor is open for it, and the item
// may have gone when it is used. Only a file that was made through a reference stays open as long
// as a copy of that reference lives.
struct FSRef {
    std::string path;    // in the system's own bytes, without a NUL
    bool isFile = false; // it was a file when the reference was made
    std::shared_ptr<platform::CreatedFile const> created = nullptr; // the file that was made
};

// A name of at most 255 units.
struct HFSUniStr255 {
    UInt16 length;
    UniChar unicode[255];
};

// A point of time: seconds since 1904-01-01 00:00 UTC, the high 16 bits and the low 32 bits, and
// 1/65536 seconds. Times before count on from the top.
struct __attribute__((packed)) UTCDateTime {
    UInt16 highSeconds;
    UInt32 lowSeconds;
    UInt16 fraction;
};
static_assert(sizeof(UTCDateTime) == 8);

// What to tell of an item, and what is told. kFSNodeLockedMask: the item is immutable.
// permissions is to be seen as an FSPermissionInfo.
using FSCatalogInfoBitmap = UInt32;
inline constexpr FSCatalogInfoBitmap kFSCatInfoNodeFlags = 0x2;
inline constexpr FSCatalogInfoBitmap kFSCatInfoContentMod = 0x40;
inline constexpr FSCatalogInfoBitmap kFSCatInfoPermissions = 0x400;
inline constexpr UInt16 kFSNodeLockedMask = 0x1;
inline constexpr UInt16 kFSNodeIsDirectoryMask = 0x10;

struct FSCatalogInfo {
    UInt16 nodeFlags;
    UTCDateTime contentModDate;
    UInt32 permissions[4];
};

// The permissions of an item: its owner, its group and its POSIX mode.
struct FSPermissionInfo {
    UInt32 userID;
    UInt32 groupID;
    UInt8 reserved1;
    UInt8 userAccess;
    UInt16 mode;
    UInt32 reserved2;
};
static_assert(sizeof(FSPermissionInfo) == sizeof(FSCatalogInfo::permissions));

extern "C" {

// The item at an absolute or relative path, a NUL-terminated text; *isDirectory may be null. A link
// that leads nowhere is an item too.
OSErr FSPathMakeRef(UInt8 const* path, FSRef* ref, Boolean* isDirectory) noexcept;

// The absolute path and its NUL into a buffer of size bytes; bdNamErr when they do not fit.
OSErr FSRefMakePath(FSRef const* ref, UInt8* path, UInt32 size) noexcept;

// The item of that name in the folder parent. The hint is not looked at.
OSErr FSMakeFSRefUnicode(
    FSRef const* parent,
    UniCharCount nameLength,
    UniChar const* name,
    UInt32 textEncodingHint,
    FSRef* newRef) noexcept;

// Information on an item; on its target for a link that leads somewhere. The name and the parent
// are not provided: the last three arguments must be null.
OSErr FSGetCatalogInfo(
    FSRef const* ref,
    FSCatalogInfoBitmap whichInfo,
    FSCatalogInfo* catalogInfo,
    HFSUniStr255* outName,
    void* fsSpec,
    FSRef* parentRef) noexcept;

// A new, empty file or folder in parent, with the permissions that the process gives by default,
// but no folder that others may write to. dupFNErr when there is anything of that name;
// afpAccessDenied for a folder in a program with raised rights, and for root where a folder above
// is not root's alone. whichInfo must be 0; newRef may be null.
OSErr FSCreateFileUnicode(
    FSRef const* parent,
    UniCharCount nameLength,
    UniChar const* name,
    FSCatalogInfoBitmap whichInfo,
    FSCatalogInfo const* catalogInfo,
    FSRef* newRef,
    void* newSpec) noexcept;
OSErr FSCreateDirectoryUnicode(
    FSRef const* parent,
    UniCharCount nameLength,
    UniChar const* name,
    FSCatalogInfoBitmap whichInfo,
    FSCatalogInfo const* catalogInfo,
    FSRef* newRef,
    void* newSpec,
    UInt32* newDirID) noexcept;

// Deletes a file or a link to one; paramErr for a folder, a device or a pipe. fLckdErr, for every
// user, when the item or what it leads to is immutable or its owner may not write it; but through
// the reference that FSCreateFileUnicode gave, its maker may delete any file.
OSErr FSDeleteObject(FSRef const* ref) noexcept;

// The name of the part of a file that holds its data: an empty name. There is no other part.
OSErr FSGetDataForkName(HFSUniStr255* dataForkName) noexcept;

inline constexpr SInt16 fsRdPerm = 1;
inline constexpr SInt16 fsRdWrPerm = 3;
inline constexpr UInt16 fsFromStart = 1;
inline constexpr UInt16 fsFromLEOF = 2;

// An open file.
using FSIORefNum = int;

// Opens the data of a regular file; through the reference that FSCreateFileUnicode gave, of the
// file just created. ioErr for anything else, which is not opened at all. Waits up to a minute for
// another process to give up its lease on the file. The caller closes it.
OSErr FSOpenFork(
    FSRef const* ref,
    UniCharCount forkNameLength,
    UniChar const* forkName,
    SInt16 permissions,
    FSIORefNum* forkRefNum) noexcept;
OSErr FSCloseFork(FSIORefNum forkRefNum) noexcept;

// The size in bytes.
OSErr FSGetForkSize(FSIORefNum forkRefNum, SInt64* forkSize) noexcept;

// Moves to offset bytes from the start or from the end.
OSErr FSSetForkPosition(FSIORefNum forkRefNum, UInt16 positionMode, SInt64 offset) noexcept;

// Read and write count bytes from that place on, all of them: fewer are ioErr or the code of the
// reason, and *actualCount (may be null) tells how many there were.
OSErr FSReadFork(
    FSIORefNum forkRefNum,
    UInt16 positionMode,
    SInt64 offset,
    ByteCount count,
    void* buffer,
    ByteCount* actualCount) noexcept;
OSErr FSWriteFork(
    FSIORefNum forkRefNum,
    UInt16 positionMode,
    SInt64 offset,
    ByteCount count,
    void const* buffer,
    ByteCount* actualCount) noexcept;

// An older reference on an item, which this service does not provide.
struct FSSpec {
    SInt16 vRefNum;
    SInt32 parID;
    UInt8 name[64];
};

// A walk over the items of one folder.
using FSIterator = struct OpaqueFSIterator*;
using FSIteratorFlags = UInt32;
using ItemCount = unsigned long;
inline constexpr FSIteratorFlags kFSIterateFlat = 0; // the folder's own items, and no others

// Starts a walk, which the caller closes; afpAccessDenied for a folder that may not be read.
OSErr FSOpenIterator(
    FSRef const* container, FSIteratorFlags iteratorFlags, FSIterator* iterator) noexcept;

// The next item with what is wanted of it. Names that are no UTF-8 and items that have gone
// meanwhile are left out. *actualObjects is 1, or 0 when there is none: then errFSNoMoreItems, or
// the code of a failure. Information is the target's for a link that leads somewhere, but a link is
// never a folder. maximumObjects must be 1 and specs null; names may be null.
OSErr FSGetCatalogInfoBulk(
    FSIterator iterator,
    ItemCount maximumObjects,
    ItemCount* actualObjects,
    Boolean* containerChanged,
    FSCatalogInfoBitmap whichInfo,
    FSCatalogInfo* catalogInfos,
    FSRef* refs,
    FSSpec* specs,
    HFSUniStr255* names) noexcept;

OSErr FSCloseIterator(FSIterator iterator) noexcept;

// Where standard folders lie.
inline constexpr SInt16 kLocalDomain = -32765; // the machine's, an administrator's
inline constexpr SInt16 kUserDomain = -32763;
inline constexpr UInt32 kApplicationSupportFolderType = 0x61737570;
inline constexpr UInt32 kPreferencesFolderType = 0x70726566;
inline constexpr Boolean kDontCreateFolder = 0;
inline constexpr Boolean kCreateFolder = 1;

// A standard folder; fnfErr when it does not exist. Only the user's application support folder is
// ever created, for the user alone. Where it cannot be created, or cannot be examined, its path is
// given all the same, since a host puts files below the path that it gets; dirNFErr where a file is
// in its place.
OSErr FSFindFolder(
    SInt16 domain, UInt32 folderType, Boolean createFolder, FSRef* foundRef) noexcept;

} // extern "C"

namespace platform {

// The path of a standard folder of a known domain and type, whether it exists or not; empty where
// the user has no home. Throws std::bad_alloc.
std::string StandardFolder(SInt16 domain, UInt32 folderType);

} // namespace platform
