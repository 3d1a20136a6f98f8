// Helpers between the file service and the system: file status, opening files, result codes for
// system errors, and file names. Private to the platform layer.
#pragma once

#include "platform/FileManager.h"

#include <string>
#include <string_view>
#include <sys/stat.h>

namespace platform {

// The result code for an errno value.
OSErr CodeOf(int error) noexcept;

// noErr if result is not negative, else the code for errno.
OSErr CodeOfResult(long result) noexcept;

// The status of an item; for a link, of its target, or of the link itself if it has no target.
class FileStatus {
public:
    OSErr Read(std::string const& path) noexcept;

    // The same for the item with that name in an open folder.
    OSErr Read(int folder, char const* name) noexcept;

    // Stores the information in whichInfo in *info.
    void CopyTo(FSCatalogInfoBitmap whichInfo, FSCatalogInfo* info) const noexcept;

    // REQUIRES, here and below: Read returned noErr.
    bool IsDirectory() const noexcept { return S_ISDIR(fStatus.stx_mode); }
    bool IsFile() const noexcept { return S_ISREG(fStatus.stx_mode); }
    // A file, or a link without a target: neither a folder nor a device or pipe.
    bool IsFileOrLink() const noexcept { return IsFile() || S_ISLNK(fStatus.stx_mode); }
    // The item is immutable: no user may change or delete it.
    bool IsLocked() const noexcept { return (fStatus.stx_attributes & STATX_ATTR_IMMUTABLE) != 0; }
    // The owner may write the item.
    bool IsWritableByOwner() const noexcept { return (fStatus.stx_mode & S_IWUSR) != 0; }

private:
    struct statx fStatus {};
};

// Opens path, relative to an open folder, with openat; repeats the call if a signal interrupts it.
// The descriptor is closed on exec, and a terminal does not become the controlling one. Returns a
// descriptor for the caller, or -1 with the reason in errno.
int OpenPath(int folder, char const* path, int flags, mode_t mode = 0) noexcept;

// Stores a name in *bytes in the system's encoding. bdNamErr for an invalid name (see
// FileManager.h).
OSErr EncodeName(UniCharCount nameLength, UniChar const* name, std::string* bytes);

// The path of the item with that name in the folder parent.
std::string ChildPath(FSRef const& parent, std::string const& name);

// Decodes a name from the system's bytes; false if it is not UTF-8 or longer than 255 bytes.
bool DecodeName(char const* bytes, HFSUniStr255* name) noexcept;

// Returns the code from work; ioErr if work throws, as it does when memory runs out.
template <class Work>
OSErr AtService(Work work) noexcept {
    try {
        return work();
    } catch (...) {
        return ioErr;
    }
}

} // namespace platform
