// Settings folders, files and their time stamps, whole files in and out, and paths at the door of
// the file service. No state.
#pragma once

#include "api/SettingsPlaces.h"
#include "api/UnicodeEncoding.h"
#include "bib/BIBMemory.h"
#include "platform/FileManager.h"

namespace UnicodeEncodingNS {

// The file or folder at path. The service's code; bdNamErr for a path with a zero unit in it, which
// would be cut short. Throws CBIBError.
OSErr MakeRef(Unicode16 const& path, FSRef* ref);

// Whole files in and out.
//
// E is thrown, default-constructed, at every failure of the file service, whose own code goes no
// further. CBIBErrors pass.

// What the templates below do, with the service's code. Descriptors are closed on every way out.
OSErr ReadFileBytes(Unicode16 const& path, Buffer8* bytes);
OSErr WriteFileBytes(Unicode16 const& path, Buffer8 const& bytes, bool failIfExists);

template <class E>
Buffer8 ReadFile_Mac(Unicode16 const& path) {
    Buffer8 bytes;
    if (ReadFileBytes(path, &bytes) != noErr) {
        throw E();
    }
    return bytes;
}

template <class E>
void WriteFile_Mac(Unicode16 const& path, Buffer8 const& bytes, bool failIfExists) {
    if (WriteFileBytes(path, bytes, failIfExists) != noErr) {
        throw E();
    }
}

// All bytes of the file at path, in a new buffer of the file's size.
template <class E>
Buffer8 ReadFile(Unicode16 const& path) {
    return ReadFile_Mac<E>(path);
}

// Makes a file at path, whose folder must exist, of bytes. An existing one is deleted first, or
// left alone if failIfExists, which is a failure. No temporary file is used: until the end there is
// no file or a short one. When a new file cannot be completed it is deleted again.
template <class E>
void WriteFile(Unicode16 const& path, Buffer8 const& bytes, bool failIfExists) {
    WriteFile_Mac<E>(path, bytes, failIfExists);
}

} // namespace UnicodeEncodingNS

// The first place of unit in a zero-terminated text, or null; null for a zero unit.
unsigned short const* my_wcschr(unsigned short const* text, unsigned short unit) noexcept;

// A hook for debugging: told of failures of the file service, it does nothing.
void MacExceptionUtils_dprintf(long error, char const* sourceFile, long line) noexcept;

namespace FileMgmtUtil {

using UnicodeEncodingNS::Unicode16;

// The content modification of a file as the file service stores it (see UTCDateTime), 8 bytes. It
// is compared and not interpreted.
using TimeStamp = BIB_T_NMT::TBIBMemoryBuffer<unsigned char, BIB_T_NMT::CBIBMemory>;

enum DirectoryType : int { kAdminDirectory = 0, kUserDirectory = 1 };

// Where settings lie below the application support folder of each domain.
inline constexpr char const* kAdminExtraPath = SettingsPlaces::kSettingsFolder;
inline constexpr char const* kUserExtraPath = SettingsPlaces::kSettingsFolder;

// The standard folder of settings, which need not exist; an empty value when the system cannot
// tell. The user's application support folder is made. Throws CPDFSettingsError for another type.
Unicode16 GuessDirectoryLocation(DirectoryType type);

// Whether there is a file or folder at path.
bool FileExists(Unicode16 const& path);

// Makes the folder at an absolute path with all that is missing above it. Whether it exists now; a
// relative path is left alone and reported as good, an empty one as bad.
bool CreateFolderIfMissing(Unicode16 const& path);

// Throws CPDFSettingsError when the file cannot be found or examined.
TimeStamp GetTimeStamp(Unicode16 const& path);

bool AreTimeStampsEqual(TimeStamp const& a, TimeStamp const& b) noexcept;

} // namespace FileMgmtUtil
