// Settings folders, files and their time stamps, reading and writing whole files, and making file
// references from paths. No state.
#pragma once

#include "api/SettingsPlaces.h"
#include "api/UnicodeEncoding.h"
#include "bib/BIBMemory.h"
#include "platform/FileManager.h"

namespace UnicodeEncodingNS {

// Stores the file or folder at path in *ref. Returns the service's code; bdNamErr for a path that
// contains a zero unit, which would be truncated. Throws CBIBError.
OSErr MakeRef(Unicode16 const& path, FSRef* ref);

// Reading and writing whole files.
//
// E is default-constructed and thrown for every failure of the file service, whose own code is not
// passed on. CBIBErrors pass to the caller.

// The implementation of the templates below; returns the service's code. Descriptors are always
// closed.
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

// Reads the file at path into a new buffer of the file's size.
template <class E>
Buffer8 ReadFile(Unicode16 const& path) {
    return ReadFile_Mac<E>(path);
}

// Writes bytes to a new file at path, whose folder must exist. An existing file is deleted first;
// with failIfExists it stays, and the call fails. There is no temporary file: until the call ends,
// the file is missing or incomplete. A new file that cannot be completed is deleted.
template <class E>
void WriteFile(Unicode16 const& path, Buffer8 const& bytes, bool failIfExists) {
    WriteFile_Mac<E>(path, bytes, failIfExists);
}

} // namespace UnicodeEncodingNS

// The first occurrence of unit in a zero-terminated string, or null; null for a zero unit.
unsigned short const* my_wcschr(unsigned short const* text, unsigned short unit) noexcept;

// A debugging hook that is called for failures of the file service. It does nothing.
void MacExceptionUtils_dprintf(long error, char const* sourceFile, long line) noexcept;

namespace FileMgmtUtil {

using UnicodeEncodingNS::Unicode16;

// The content modification date of a file as the file service stores it (see UTCDateTime), 8 bytes.
// It is only compared, never interpreted.
using TimeStamp = BIB_T_NMT::TBIBMemoryBuffer<unsigned char, BIB_T_NMT::CBIBMemory>;

enum DirectoryType : int { kAdminDirectory = 0, kUserDirectory = 1 };

// The settings folder, relative to the application support folder of each domain.
inline constexpr char const* kAdminExtraPath = SettingsPlaces::kSettingsFolder;
inline constexpr char const* kUserExtraPath = SettingsPlaces::kSettingsFolder;

// The standard settings folder, which need not exist; an empty value if the system has none. The
// user's application support folder is created. Throws CPDFSettingsError for another type.
Unicode16 GuessDirectoryLocation(DirectoryType type);

// Whether there is a file or folder at path.
bool FileExists(Unicode16 const& path);

// Creates the folder at an absolute path and its missing parents. Returns whether it exists now.
// For a relative path, creates nothing and returns true; for an empty path, returns false.
bool CreateFolderIfMissing(Unicode16 const& path);

// The time stamp of the file at path. Throws CPDFSettingsError if the file cannot be found or
// examined.
TimeStamp GetTimeStamp(Unicode16 const& path);

bool AreTimeStampsEqual(TimeStamp const& a, TimeStamp const& b) noexcept;

} // namespace FileMgmtUtil
