// The part of the file service that the component calls.
//
// Names, types, values and result codes follow the service's own interface. Every call returns
// noErr, or an error code, and then it has stored nothing unless its comment says otherwise. File
// names are counted UTF-16 units. A name is rejected with bdNamErr, and never truncated, if it is
// empty, longer than 255 bytes in UTF-8, or not well-formed UTF-16, or if it contains a zero unit
// or a slash. Only FSOpenFork and FSCreateFileUnicode keep a descriptor open after the call.
// Thread-safe.
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

// A file or folder. A copyable value that holds a path, not an open descriptor: the item may no
// longer exist when it is used. Only a file that was created through a reference stays open while a
// copy of that reference exists.
struct FSRef {
    std::string path;    // in the system's bytes, without a NUL
    bool isFile = false; // whether it was a file when the reference was made
    std::shared_ptr<platform::CreatedFile const> created = nullptr; // the file that was created
};

// A name of at most 255 units.
struct HFSUniStr255 {
    UInt16 length;
    UniChar unicode[255];
};

// A point in time: seconds since 1904-01-01 00:00 UTC, as the high 16 bits and the low 32 bits, and
// 1/65536 seconds. Earlier times wrap around to the largest values.
struct __attribute__((packed)) UTCDateTime {
    UInt16 highSeconds;
    UInt32 lowSeconds;
    UInt16 fraction;
};
static_assert(sizeof(UTCDateTime) == 8);

// The information that a call returns about an item. kFSNodeLockedMask: the item is immutable.
// permissions has the layout of FSPermissionInfo.
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

// The permissions of an item: owner, group and POSIX mode.
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

// The item at path, an absolute or relative NUL-terminated string. *isDirectory may be null. A link
// without a target is an item too.
OSErr FSPathMakeRef(UInt8 const* path, FSRef* ref, Boolean* isDirectory) noexcept;

// Stores the absolute path and a NUL in a buffer of size bytes; bdNamErr if they do not fit.
OSErr FSRefMakePath(FSRef const* ref, UInt8* path, UInt32 size) noexcept;

// The item with that name in the folder parent. textEncodingHint is ignored.
OSErr FSMakeFSRefUnicode(
    FSRef const* parent,
    UniCharCount nameLength,
    UniChar const* name,
    UInt32 textEncodingHint,
    FSRef* newRef) noexcept;

// Information about an item; about the target if the item is a link that has one. Names and parents
// are not provided: the last three arguments must be null.
OSErr FSGetCatalogInfo(
    FSRef const* ref,
    FSCatalogInfoBitmap whichInfo,
    FSCatalogInfo* catalogInfo,
    HFSUniStr255* outName,
    void* fsSpec,
    FSRef* parentRef) noexcept;

// Creates an empty file or folder in parent, with the default permissions of the process, except
// that others never get write access to a folder. dupFNErr if an item with that name exists.
// afpAccessDenied for a folder in a program with raised privileges, and for root if a folder above
// does not belong to root alone. whichInfo must be 0; newRef may be null.
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
// user, if the item or the link's target is immutable or its owner has no write permission. These
// checks do not apply to a new file that is deleted through the reference from FSCreateFileUnicode.
OSErr FSDeleteObject(FSRef const* ref) noexcept;

// The name of the fork that holds a file's data: an empty name. There is no other fork.
OSErr FSGetDataForkName(HFSUniStr255* dataForkName) noexcept;

inline constexpr SInt16 fsRdPerm = 1;
inline constexpr SInt16 fsRdWrPerm = 3;
inline constexpr UInt16 fsFromStart = 1;
inline constexpr UInt16 fsFromLEOF = 2;

// An open file.
using FSIORefNum = int;

// Opens the data fork of a regular file. Through the reference from FSCreateFileUnicode, opens the
// file that was created. ioErr for any other item, which is not opened at all. Waits up to a minute
// for another process to release its lease on the file. The caller closes the fork.
OSErr FSOpenFork(
    FSRef const* ref,
    UniCharCount forkNameLength,
    UniChar const* forkName,
    SInt16 permissions,
    FSIORefNum* forkRefNum) noexcept;
OSErr FSCloseFork(FSIORefNum forkRefNum) noexcept;

// The size in bytes.
OSErr FSGetForkSize(FSIORefNum forkRefNum, SInt64* forkSize) noexcept;

// Moves the position to offset bytes from the start or from the end.
OSErr FSSetForkPosition(FSIORefNum forkRefNum, UInt16 positionMode, SInt64 offset) noexcept;

// Read or write exactly count bytes from that position. Fewer bytes are ioErr or the code of the
// cause; *actualCount (may be null) receives the number of bytes in either case.
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

// An older reference to an item, which this service does not provide.
struct FSSpec {
    SInt16 vRefNum;
    SInt32 parID;
    UInt8 name[64];
};

// An iteration over the items of one folder.
using FSIterator = struct OpaqueFSIterator*;
using FSIteratorFlags = UInt32;
using ItemCount = unsigned long;
inline constexpr FSIteratorFlags kFSIterateFlat = 0; // only the folder's own items

// Starts an iteration, which the caller closes; afpAccessDenied for a folder that may not be read.
OSErr FSOpenIterator(
    FSRef const* container, FSIteratorFlags iteratorFlags, FSIterator* iterator) noexcept;

// The next item with the requested information. Items whose names are not UTF-8, and items that
// have been removed in the meantime, are skipped. *actualObjects is 1. If there is no next item, it
// is 0 and the result is errFSNoMoreItems or the code of a failure. For a link with a target, the
// information is that of the target, but a link is never a folder. maximumObjects must be 1 and
// specs null; names may be null.
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

// The standard folders.
inline constexpr SInt16 kLocalDomain = -32765; // the machine, for the administrator
inline constexpr SInt16 kUserDomain = -32763;
inline constexpr UInt32 kApplicationSupportFolderType = 0x61737570;
inline constexpr UInt32 kPreferencesFolderType = 0x70726566;
inline constexpr Boolean kDontCreateFolder = 0;
inline constexpr Boolean kCreateFolder = 1;

// A standard folder; fnfErr if it does not exist. With createFolder, the user's application support
// folder is created, private to the user; no other folder ever is. If it cannot be created or
// examined, its path is returned anyway, since a host puts files below that path. dirNFErr if a
// file is in its place.
OSErr FSFindFolder(
    SInt16 domain, UInt32 folderType, Boolean createFolder, FSRef* foundRef) noexcept;

} // extern "C"

namespace platform {

// The path of a standard folder of a known domain and type, whether it exists or not; empty if the
// user has no home. Throws std::bad_alloc.
std::string StandardFolder(SInt16 domain, UInt32 folderType);

} // namespace platform
