// Walks over the items of a folder.
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

// What stands behind an FSIterator.
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

    std::string const fFolder; // with a slash at its end
    DIR* const fStream;        // null when the folder cannot be read, which errno tells
};

namespace {

bool IsSelfOrParent(std::string_view name) noexcept {
    return name == "." || name == "..";
}

bool IsLink(int folder, char const* name) noexcept {
    struct stat status {};
    return fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(status.st_mode);
}

// The status of the next item and its name, which is *bytes to the system up to the next call. An
// item that has gone meanwhile or that cannot be looked at is passed over: it must not hide those
// behind it.
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

// A walk must not leave its folder through a link, nor go round in circles.
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
        status.Tell(whichInfo, catalogInfos);
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
