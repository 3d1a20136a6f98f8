// Items and their paths: information about an item, and creating and deleting items.
#include "platform/FileManager.h"
#include "platform/FileSystem.h"
#include "platform/NewFiles.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

using platform::AtService;
using platform::CodeOf;
using platform::CodeOfResult;
using platform::FileStatus;

namespace {

// Makes a relative path absolute; empty if the current folder cannot be determined, with the reason
// in errno.
std::string Absolute(std::string const& path) {
    std::unique_ptr<char, void (*)(void*)> const folder(getcwd(nullptr, 0), &std::free);
    if (!folder) {
        return {};
    }
    std::string const current = folder.get();
    return current + (current.ends_with('/') ? "" : "/") + path;
}

OSErr CopyPath(std::string const& path, UInt8* buffer, UInt32 size) noexcept {
    if (path.size() >= size) {
        return bdNamErr;
    }
    std::memcpy(buffer, path.c_str(), path.size() + 1);
    return noErr;
}

// Others may read new folders, but not write to them.
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

// Creates an item with that name by calling create.
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

OSErr FSPathMakeRef(UInt8 const* path, FSRef* ref, Boolean* isDirectory) noexcept {
    return AtService([=] {
        std::string found(reinterpret_cast<char const*>(path));
        FileStatus status;
        OSErr const error = status.Read(found);
        if (error != noErr) {
            return error;
        }
        *ref = {std::move(found), status.IsFile()};
        if (isDirectory != nullptr) {
            *isDirectory = status.IsDirectory() ? 1 : 0;
        }
        return error;
    });
}

OSErr FSRefMakePath(FSRef const* ref, UInt8* path, UInt32 size) noexcept {
    return AtService([=] {
        if (ref->path.starts_with('/')) {
            return CopyPath(ref->path, path, size);
        }
        std::string const absolute = Absolute(ref->path);
        return absolute.empty() ? CodeOf(errno) : CopyPath(absolute, path, size);
    });
}

OSErr FSMakeFSRefUnicode(
    FSRef const* parent,
    UniCharCount nameLength,
    UniChar const* name,
    UInt32 /*textEncodingHint*/,
    FSRef* newRef) noexcept {
    return AtService([=] {
        std::string child;
        std::string path;
        OSErr error = platform::EncodeName(nameLength, name, &child);
        FileStatus status;
        if (error == noErr) {
            path = platform::ChildPath(*parent, child);
            error = status.Read(path);
        }
        if (error == noErr) {
            *newRef = {std::move(path), status.IsFile()};
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
    status.CopyTo(whichInfo, catalogInfo);
    return noErr;
}

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

// A file that its owner may not write is not deleted, although the system allows it to the owner of
// the folder: read-only settings are never replaced. A file that was just created holds no settings
// yet.
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
