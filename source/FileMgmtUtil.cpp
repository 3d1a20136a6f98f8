#include "source/FileMgmtUtil.h"

#include "platform/FileManager.h"
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
constexpr unsigned long kPathSize = 1024; // in bytes, its terminator included

// A standard folder and where settings lie in it.
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

// Goes down a path from the root, one folder after the other, and makes those that are missing.
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

    // What was well so far stays so if the last folder exists; if it is missing, its making decides
    // alone.
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

// text is the path with a zero unit behind it, at which every search ends.
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
