// Iterators over the items of a folder.
#include "platform/FileManager.h"
#include "platform/FileSystem.h"

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>

using platform::AtService;
using platform::CodeOf;
using platform::FileStatus;

// The state of an FSIterator.
struct OpaqueFSIterator {
    explicit OpaqueFSIterator(std::string folder)
        : fFolder(std::move(folder)),
          fStream(opendir(fFolder.c_str())) {}
    OpaqueFSIterator(OpaqueFSIterator const&) = delete;
    OpaqueFSIterator& operator=(OpaqueFSIterator const&) = delete;
    ~OpaqueFSIterator() {
        if (fStream != nullptr) {
            closedir(fStream);
        }
    }

    std::string const fFolder; // ends in a slash
    DIR* const fStream;        // null if opendir failed, with the reason in errno
};

namespace {

bool IsSelfOrParent(std::string_view name) noexcept {
    return name == "." || name == "..";
}

bool IsLink(int folder, char const* name) noexcept {
    struct stat status {};
    return fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(status.st_mode);
}

// The status and name of the next item. *bytes receives the name in the system's bytes, valid until
// the next call. An item that has been removed in the meantime or that cannot be examined is
// skipped, so that it does not hide later items.
OSErr NextItem(DIR* stream, FileStatus* status, HFSUniStr255* name, char const** bytes) {
    for (;;) {
        errno = 0;
        dirent const* const entry = readdir(stream);
        if (entry == nullptr) {
            return errno == 0 ? errFSNoMoreItems : CodeOf(errno);
        }
        if (IsSelfOrParent(entry->d_name) || !platform::DecodeName(entry->d_name, name)) {
            continue;
        }
        if (status->Read(dirfd(stream), entry->d_name) == noErr) {
            *bytes = entry->d_name;
            return noErr;
        }
    }
}

// A walk must not leave its folder through a link or loop.
bool IsFolderByLink(FileStatus const& status, int folder, char const* name) noexcept {
    return status.IsDirectory() && IsLink(folder, name);
}

} // namespace

OSErr FSOpenIterator(
    FSRef const* container, FSIteratorFlags iteratorFlags, FSIterator* iterator) noexcept {
    if (iteratorFlags != kFSIterateFlat) {
        return paramErr;
    }
    return AtService([=]() -> OSErr {
        std::string folder = container->path;
        if (folder.empty() || folder.back() != '/') {
            folder += '/';
        }
        auto opened = std::make_unique<OpaqueFSIterator>(std::move(folder));
        if (opened->fStream == nullptr) {
            return CodeOf(errno);
        }
        *iterator = opened.release();
        return noErr;
    });
}

OSErr FSGetCatalogInfoBulk(
    FSIterator iterator,
    ItemCount maximumObjects,
    ItemCount* actualObjects,
    Boolean* containerChanged,
    FSCatalogInfoBitmap whichInfo,
    FSCatalogInfo* catalogInfos,
    FSRef* refs,
    FSSpec* specs,
    HFSUniStr255* names) noexcept {
    *actualObjects = 0;
    *containerChanged = 0;
    if (maximumObjects != 1 || specs != nullptr) {
        return paramErr;
    }
    return AtService([=] {
        FileStatus status;
        HFSUniStr255 unwanted;
        HFSUniStr255* const name = names != nullptr ? names : &unwanted;
        char const* bytes = "";
        OSErr const error = NextItem(iterator->fStream, &status, name, &bytes);
        if (error != noErr) {
            return error;
        }
        refs->path.assign(iterator->fFolder).append(bytes);
        refs->created.reset();
        refs->isFile = status.IsFile();
        status.CopyTo(whichInfo, catalogInfos);
        if (IsFolderByLink(status, dirfd(iterator->fStream), bytes)) {
            catalogInfos->nodeFlags &= static_cast<UInt16>(~kFSNodeIsDirectoryMask);
        }
        *actualObjects = 1;
        return noErr;
    });
}

OSErr FSCloseIterator(FSIterator iterator) noexcept {
    delete iterator;
    return noErr;
}
