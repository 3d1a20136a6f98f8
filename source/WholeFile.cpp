#include "source/WholeFile.h"

#include "source/FileMgmtUtil.h"

#include <algorithm>

namespace UnicodeEncodingNS {

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

// The parts of a path: the folder with its last slash, and the name behind it.
struct SplitPath {
    Unicode16 fFolder;
    Buffer16 fName;
};

// Takes path apart at its last slash. Without one, and for a path that ends in one, the name is
// empty. A byte order mark that a part begins with is not of its text. Throws CBIBError.
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

// The data of a file, closed in the end.
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

// A new file, deleted again unless it is kept.
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

// Makes the file, in place of an existing one if that may be.
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
