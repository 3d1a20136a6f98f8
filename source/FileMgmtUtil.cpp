#include "source/FileMgmtUtil.h"

#include "source/PDFSettingsError.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace UnicodeEncodingNS {

OSErr MakeRef(Unicode16 const& path, FSRef* ref) {
    Buffer8 const text =
        CreateUnicode8(path).GetString(kByteOrderBigEndian, /*terminate=*/true, /*mark=*/false);
    auto const* const bytes = reinterpret_cast<char const*>(text.GetBuffer());
    bool const isWhole = std::strlen(bytes) + 1 == text.GetSize();
    return isWhole ? FSPathMakeRef(text.GetBuffer(), ref, nullptr) : bdNamErr;
}

namespace {

constexpr unsigned short kSlash = '/';

Buffer16 Copy(unsigned short const* begin, unsigned short const* end) {
    auto const count = static_cast<unsigned long>(end - begin);
    Buffer16 const copy(count, nullptr);
    std::copy(begin, end, copy.GetBuffer());
    return copy;
}

Buffer16 Units(Unicode16 const& text) {
    return text.GetString(kByteOrderBigEndian, /*terminate=*/false, /*mark=*/false);
}

// The parts of a path: the folder with its last slash, and the name after it.
struct SplitPath {
    Unicode16 fFolder;
    Buffer16 fName;
};

// Splits path at its last slash. Without a slash, both parts are empty; if the path ends in one,
// the name is empty. A byte order mark at the start of a part is removed. Throws CBIBError.
SplitPath Split(Unicode16 const& path) {
    Buffer16 const text = Units(path);
    unsigned short const* const begin = text.GetBuffer();
    unsigned short const* const end = begin + text.GetNumElements();
    unsigned short const* name = end;
    while (name != begin && name[-1] != kSlash) {
        --name;
    }
    if (name == begin) {
        return {};
    }
    return {CreateUnicode16(Copy(begin, name)), Units(CreateUnicode16(Copy(name, end)))};
}

// The data of a file, closed by the destructor.
class OpenFork {
public:
    OpenFork() = default;
    ~OpenFork() {
        if (fIsOpen) {
            FSCloseFork(fNumber);
        }
    }
    OpenFork(OpenFork const&) = delete;
    OpenFork& operator=(OpenFork const&) = delete;

    OSErr Open(FSRef const& ref, SInt16 permissions) {
        HFSUniStr255 name{};
        OSErr error = FSGetDataForkName(&name);
        if (error == noErr) {
            error = FSOpenFork(&ref, name.length, name.unicode, permissions, &fNumber);
        }
        fIsOpen = error == noErr;
        return error;
    }

    FSIORefNum Number() const noexcept { return fNumber; }

private:
    FSIORefNum fNumber = 0;
    bool fIsOpen = false;
};

// A new file, which the destructor deletes unless Keep() was called.
class NewFile {
public:
    explicit NewFile(FSRef const& ref) noexcept : fRef(ref) {}
    ~NewFile() {
        if (!fIsKept) {
            FSDeleteObject(&fRef);
        }
    }
    NewFile(NewFile const&) = delete;
    NewFile& operator=(NewFile const&) = delete;

    void Keep() noexcept { fIsKept = true; }

private:
    FSRef const& fRef;
    bool fIsKept = false;
};

OSErr ReadFork(OpenFork const& fork, Buffer8* bytes) {
    SInt64 size = 0;
    OSErr error = FSGetForkSize(fork.Number(), &size);
    if (error == noErr) {
        error = FSSetForkPosition(fork.Number(), fsFromStart, 0);
    }
    if (error != noErr) {
        return error;
    }
    Buffer8 const buffer(static_cast<unsigned long>(size), nullptr);
    ByteCount actualCount = 0;
    error = FSReadFork(
        fork.Number(), fsFromStart, 0, buffer.GetSize(), buffer.GetBuffer(), &actualCount);
    if (error == noErr) {
        *bytes = buffer;
    }
    return error;
}

OSErr WriteFork(FSRef const& ref, Buffer8 const& bytes) {
    OpenFork fork;
    OSErr const error = fork.Open(ref, fsRdWrPerm);
    if (error != noErr) {
        return error;
    }
    ByteCount actualCount = 0;
    return FSWriteFork(
        fork.Number(), fsFromLEOF, 0, bytes.GetSize(), bytes.GetBuffer(), &actualCount);
}

OSErr CreateFile(FSRef const& folder, Buffer16 const& name, FSRef* file) {
    return FSCreateFileUnicode(
        &folder, name.GetNumElements(), name.GetBuffer(), 0, nullptr, file, nullptr);
}

OSErr DeleteFile(Unicode16 const& path) {
    FSRef file;
    OSErr const error = MakeRef(path, &file);
    return error == noErr ? FSDeleteObject(&file) : error;
}

// Creates the file; deletes an existing one first unless failIfExists.
OSErr CreateOrReplace(
    Unicode16 const& path, SplitPath const& parts, bool failIfExists, FSRef* file) {
    FSRef folder;
    OSErr error = MakeRef(parts.fFolder, &folder);
    if (error != noErr) {
        return error;
    }
    error = CreateFile(folder, parts.fName, file);
    if (error != dupFNErr || failIfExists) {
        return error;
    }
    error = DeleteFile(path);
    return error == noErr ? CreateFile(folder, parts.fName, file) : error;
}

} // namespace

OSErr ReadFileBytes(Unicode16 const& path, Buffer8* bytes) {
    FSRef ref;
    OSErr error = MakeRef(path, &ref);
    if (error != noErr) {
        return error;
    }
    OpenFork fork;
    error = fork.Open(ref, fsRdPerm);
    return error == noErr ? ReadFork(fork, bytes) : error;
}

OSErr WriteFileBytes(Unicode16 const& path, Buffer8 const& bytes, bool failIfExists) {
    SplitPath const parts = Split(path);
    if (parts.fName.GetNumElements() == 0) {
        return bdNamErr;
    }
    FSRef file;
    OSErr error = CreateOrReplace(path, parts, failIfExists, &file);
    if (error != noErr) {
        return error;
    }
    NewFile created(file);
    error = WriteFork(file, bytes);
    if (error == noErr) {
        created.Keep();
    }
    return error;
}

} // namespace UnicodeEncodingNS

using PDFSettingsImpl::CPDFSettingsError;
using PDFSettingsImpl::ThrowIfFalse;
using UnicodeEncodingNS::Buffer16;
using UnicodeEncodingNS::Unicode8;

unsigned short const* my_wcschr(unsigned short const* text, unsigned short unit) noexcept {
    while (*text != 0 && *text != unit) {
        ++text;
    }
    return *text != 0 ? text : nullptr;
}

void MacExceptionUtils_dprintf(long /*error*/, char const* /*sourceFile*/, long /*line*/) noexcept {
}

namespace FileMgmtUtil {

namespace {

constexpr unsigned short kSlash = '/';
constexpr UInt32 kTextEncodingHint = 4;
constexpr unsigned long kPathSize = 1024; // in bytes, including the terminator

// A standard folder, and the path of the settings folder in it.
struct Location {
    SInt16 fDomain;
    Boolean fCreateFolder;
    char const* fExtraPath;
};

Location LocationOf(DirectoryType type) {
    switch (type) {
    case kAdminDirectory:
        return {kLocalDomain, kDontCreateFolder, kAdminExtraPath};
    case kUserDirectory:
        return {kUserDomain, kCreateFolder, kUserExtraPath};
    }
    throw CPDFSettingsError(
        "Internal error: Unknown directory type", PDFSettingsImpl::kInternalError);
}

// Follows a path from the root, one folder at a time, and creates missing folders.
class FolderWalk {
public:
    FolderWalk() { fIsOk = FSPathMakeRef(kRoot, &fParent, nullptr) == noErr; }

    bool IsOk() const noexcept { return fIsOk; }

    // The folder from begin to end becomes the parent of the next one.
    void Enter(unsigned short const* begin, unsigned short const* end) {
        FSRef child;
        Make(begin, end, &child);
        if (fIsOk) {
            fParent = child;
        }
    }

    // The last step: creates the last folder if it is missing, and then only that result counts,
    // even if an earlier step failed.
    void Finish(unsigned short const* begin, unsigned short const* end) {
        FSRef child;
        Make(begin, end, &child);
    }

private:
    static constexpr UInt8 kRoot[] = "/";

    void Make(unsigned short const* begin, unsigned short const* end, FSRef* child) {
        auto const length = static_cast<UniCharCount>(end - begin);
        if (FSMakeFSRefUnicode(&fParent, length, begin, kTextEncodingHint, child) != noErr) {
            fIsOk = FSCreateDirectoryUnicode(
                        &fParent, length, begin, 0, nullptr, child, nullptr, nullptr) == noErr;
        }
    }

    FSRef fParent;
    bool fIsOk;
};

// text is the path with a terminating zero unit, which ends every search.
bool MakeFolders(unsigned short const* text, unsigned long length) {
    FolderWalk walk;
    unsigned short const* cursor = text + 1;
    unsigned short const* slash = my_wcschr(cursor, kSlash);
    while (walk.IsOk() && slash != nullptr) {
        walk.Enter(cursor, slash);
        cursor = slash + 1;
        slash = my_wcschr(cursor, kSlash);
    }
    walk.Finish(cursor, text + length);
    return walk.IsOk();
}

} // namespace

Unicode16 GuessDirectoryLocation(DirectoryType type) {
    Location const location = LocationOf(type);
    FSRef folder;
    UInt8 path[kPathSize] = {};
    if (FSFindFolder(
            location.fDomain, kApplicationSupportFolderType, location.fCreateFolder, &folder) !=
            noErr ||
        FSRefMakePath(&folder, path, sizeof path) != noErr) {
        return Unicode16();
    }
    std::string const whole =
        reinterpret_cast<char const*>(path) + std::string(location.fExtraPath);
    return CreateUnicode16(Unicode8(whole.c_str()));
}

bool FileExists(Unicode16 const& path) {
    FSRef ref;
    return MakeRef(path, &ref) == noErr;
}

bool CreateFolderIfMissing(Unicode16 const& path) {
    if (FileExists(path)) {
        return true;
    }
    Buffer16 const text =
        path.GetString(UnicodeEncodingNS::kByteOrderBigEndian, /*terminate=*/true, /*mark=*/false);
    unsigned long const length = text.GetNumElements() - 1;
    if (length == 0) {
        return false;
    }
    return text[0] != kSlash || MakeFolders(text.GetBuffer(), length);
}

TimeStamp GetTimeStamp(Unicode16 const& path) {
    FSRef ref;
    ThrowIfFalse(MakeRef(path, &ref) == noErr, "FileMgmtUtil::GetTimeStamp FSPathMakeRef failed");
    FSCatalogInfo info{};
    OSErr const error =
        FSGetCatalogInfo(&ref, kFSCatInfoContentMod, &info, nullptr, nullptr, nullptr);
    if (error != noErr) {
        MacExceptionUtils_dprintf(error, __FILE__, __LINE__);
        throw CPDFSettingsError("MacOSErr", PDFSettingsImpl::kPlatformError);
    }
    return TimeStamp(
        reinterpret_cast<unsigned char const*>(&info.contentModDate), sizeof info.contentModDate);
}

bool AreTimeStampsEqual(TimeStamp const& a, TimeStamp const& b) noexcept {
    return a.GetSize() == b.GetSize() &&
           std::equal(a.GetBuffer(), a.GetBuffer() + a.GetSize(), b.GetBuffer());
}

} // namespace FileMgmtUtil
