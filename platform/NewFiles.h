// Making files and folders. Private to the platform layer.
#pragma once

#include "platform/FileManager.h"

#include <memory>
#include <string>
#include <sys/types.h>
#include <utility>

namespace platform {

// Holds the new file and its folder open: what is written goes to this file and only this file is
// deleted, whatever is renamed in the folder meanwhile.
class CreatedFile {
public:
    // Makes an empty file of that name in the folder at a path, which must not have one. dupFNErr
    // if it has, else the code of the failure. Throws for memory.
    static OSErr
    Make(std::string const& folder, std::string const& name, std::shared_ptr<CreatedFile>* made);

    ~CreatedFile();
    CreatedFile(CreatedFile const&) = delete;
    CreatedFile& operator=(CreatedFile const&) = delete;

    // A descriptor for reading and writing, for the caller, or -1 with the reason in errno.
    int Duplicate() const noexcept;

    // Deletes the file, unless another one has its name now: then fnfErr.
    OSErr Delete() const noexcept;

private:
    explicit CreatedFile(std::string name) : fName(std::move(name)) {}

    std::string const fName;
    int fFolder = -1;
    int fFile = -1;
};

// Makes the folder at path, whose parent must exist, with that mode less the umask.
// afpAccessDenied, and no folder, where it could end up in another user's hands: in a program with
// raised rights, and for root where a folder above belongs to somebody else or others may write to
// it. dupFNErr when there is anything at path, else the code of the failure. Throws for memory.
OSErr MakeFolder(std::string const& path, mode_t mode);

} // namespace platform
