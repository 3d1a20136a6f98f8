// Creating and deleting files and folders.
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/FileManager.h"
#include "platform/FileNames.h"
#include "platform/FileStatus.h"
#include "platform/SystemErrors.h"

using platform::AtService;
using platform::CodeOfResult;
using platform::FileStatus;
using platform::OpenPath;

namespace {

constexpr mode_t kFileMode = 0666;
constexpr mode_t kFolderMode = 0777;

OSErr CreateFile(char const* path) noexcept {
    int const file = OpenPath(path, O_WRONLY | O_CREAT | O_EXCL, kFileMode);
    OSErr const error = CodeOfResult(file);
    if (file >= 0) {
        close(file);
    }
    return error;
}

OSErr CreateFolder(char const* path) noexcept {
    return CodeOfResult(mkdir(path, kFolderMode));
}

// Creates an item of that name by create.
OSErr CreateItem(
    FSRef const* parent,
    UniCharCount nameLength,
    UniChar const* name,
    FSRef* newRef,
    OSErr (*create)(char const*)) noexcept {
    return AtService([=] {
        std::string path;
        OSErr error = platform::ChildPath(*parent, nameLength, name, &path);
        if (error == noErr) {
            error = create(path.c_str());
        }
        if (error == noErr && newRef != nullptr) {
            *newRef = {std::move(path), /*isCreated=*/true, /*isFile=*/create == &CreateFile};
        }
        return error;
    });
}

} // namespace

OSErr FSCreateFileUnicode(
    FSRef const* parent,
    UniCharCount nameLength,
    UniChar const* name,
    FSCatalogInfoBitmap whichInfo,
    FSCatalogInfo const* /*catalogInfo*/,
    FSRef* newRef,
    void* /*newSpec*/) noexcept {
    return whichInfo != 0 ? paramErr : CreateItem(parent, nameLength, name, newRef, &CreateFile);
}

OSErr FSCreateDirectoryUnicode(
    FSRef const* parent,
    UniCharCount nameLength,
    UniChar const* name,
    FSCatalogInfoBitmap whichInfo,
    FSCatalogInfo const* /*catalogInfo*/,
    FSRef* newRef,
    void* /*newSpec*/,
    UInt32* /*newDirID*/) noexcept {
    return whichInfo != 0 ? paramErr : CreateItem(parent, nameLength, name, newRef, &CreateFolder);
}

// A file that its owner may not write stays, though the system would let the folder's owner delete
// it: settings that are read-only are never replaced. A file just made is nobody's settings yet.
OSErr FSDeleteObject(FSRef const* ref) noexcept {
    FileStatus status;
    if (OSErr const error = status.Read(ref->path); error != noErr) {
        return error;
    }
    if (!status.IsFileOrLink()) {
        return paramErr;
    }
    if (status.IsLocked() || (!ref->isCreated && !status.IsWritableByOwner())) {
        return fLckdErr;
    }
    return CodeOfResult(unlink(ref->path.c_str()));
}
