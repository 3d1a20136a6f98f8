// What stands between the file service and the system: what the system knows of a file, opening
// one, its errors as result codes and its file names. Private to the platform layer.
#pragma once

#include "platform/FileManager.h"

#include <string>
#include <string_view>
#include <sys/stat.h>

namespace platform {

// The code for an errno value.
OSErr CodeOf(int error) noexcept;

// noErr for a result that is not negative, else the code for errno.
OSErr CodeOfResult(long result) noexcept;

// The status of an item: of a link's target, or of the link itself if it leads nowhere.
class FileStatus {
public:
    OSErr Read(std::string const& path) noexcept;

    // The same of the item of that name in an open folder.
    OSErr Read(int folder, char const* name) noexcept;

    // What whichInfo names into *info.
    void Tell(FSCatalogInfoBitmap whichInfo, FSCatalogInfo* info) const noexcept;

    // The queries REQUIRE: Read gave noErr.
    bool IsDirectory() const noexcept { return S_ISDIR(fStatus.stx_mode); }
    bool IsFile() const noexcept { return S_ISREG(fStatus.stx_mode); }
    // A file, or a link that leads nowhere: nothing that holds other things or is none on disk.
    bool IsFileOrLink() const noexcept { return IsFile() || S_ISLNK(fStatus.stx_mode); }
    // Nobody may change or delete the item.
    bool IsLocked() const noexcept { return (fStatus.stx_attributes & STATX_ATTR_IMMUTABLE) != 0; }
    // The owner may write the item.
    bool IsWritableByOwner() const noexcept { return (fStatus.stx_mode & S_IWUSR) != 0; }

private:
    struct statx fStatus {};
};

// Opens path, from an open folder on, as the system does, in no child process and as no terminal,
// also where a signal interrupts it. A descriptor for the caller, or -1 with the reason in errno.
int OpenPath(int folder, char const* path, int flags, mode_t mode = 0) noexcept;

// A name as the system wants it into *bytes. bdNamErr for one that no file can have (see
// FileManager.h).
OSErr EncodeName(UniCharCount nameLength, UniChar const* name, std::string* bytes);

// The path of the item of that name in the folder parent.
std::string ChildPath(FSRef const& parent, std::string const& name);

// The units of a name in the system's bytes; false for one that is no UTF-8.
bool DecodeName(char const* bytes, HFSUniStr255* name) noexcept;

// Calls work, which gives a code; ioErr when memory runs out in it.
template <class Work>
OSErr AtService(Work work) noexcept {
    try {
        return work();
    } catch (...) {
        return ioErr;
    }
}

} // namespace platform
