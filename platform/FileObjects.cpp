// Creating and deleting files and folders.
#include "platform/FileManager.h"
#include "platform/FileNames.h"
#include "platform/FileStatus.h"
#include "platform/NewFiles.h"

#include <unistd.h>

using platform::AtService;
using platform::CodeOfResult;
using platform::FileStatus;

namespace {

// Others may look into new folders, but not write to them.
constexpr mode_t kFolderMode = 0755;

OSErr CreateFile(FSRef const& parent, std::string const& name, FSRef* made) {
    made->path = platform::ChildPath(parent, name);
    made->isFile = true;
    std::shared_ptr<platform::CreatedFile> file;
    OSErr const error = platform::CreatedFile::Make(platform::ChildPath(parent, ""), name, &file);
    made->created = file;
    return error;
}

OSErr CreateFolder(FSRef const& parent, std::string const& name, FSRef* made) {
    made->path = platform::ChildPath(parent, name);
    return platform::MakeFolder(made->path, kFolderMode);
}

// Creates an item of that name by create.
OSErr CreateItem(
    FSRef const* parent,
    UniCharCount nameLength,
    UniChar const* name,
    FSRef* newRef,
    OSErr (*create)(FSRef const&, std::string const&, FSRef*)) noexcept {
    return AtService([=] {
        std::string child;
        FSRef made;
        OSErr error = platform::EncodeName(nameLength, name, &child);
        if (error == noErr) {
            error = create(*parent, child, &made);
        }
        if (error == noErr && newRef != nullptr) {
            *newRef = std::move(made);
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
    if (ref->created != nullptr) {
        return ref->created->Delete();
    }
    FileStatus status;
    if (OSErr const error = status.Read(ref->path); error != noErr) {
        return error;
    }
    if (!status.IsFileOrLink()) {
        return paramErr;
    }
    if (status.IsLocked() || !status.IsWritableByOwner()) {
        return fLckdErr;
    }
    return CodeOfResult(unlink(ref->path.c_str()));
}
