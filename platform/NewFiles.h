// Creating files and folders. Private to the platform layer.
#pragma once

#include "platform/FileManager.h"

#include <memory>
#include <string>
#include <sys/types.h>
#include <utility>

namespace platform {

// A new file, kept open together with its folder: writes go to this file, and only this file is
// deleted, even if items in the folder are renamed in the meantime.
class CreatedFile {
public:
    // Creates an empty file with that name in folder. dupFNErr if an item with that name exists,
    // else the code of the failure. Throws std::bad_alloc.
    static OSErr
    Make(std::string const& folder, std::string const& name, std::shared_ptr<CreatedFile>* made);

    ~CreatedFile();
    CreatedFile(CreatedFile const&) = delete;
    CreatedFile& operator=(CreatedFile const&) = delete;

    // A descriptor for reading and writing, owned by the caller, or -1 with the reason in errno.
    int Duplicate() const noexcept;

    // Deletes the file; fnfErr, and no deletion, if another file now has its name.
    OSErr Delete() const noexcept;

private:
    explicit CreatedFile(std::string name) : fName(std::move(name)) {}

    std::string const fName;
    int fFolder = -1;
    int fFile = -1;
};

// Creates the folder at path, whose parent must exist, with mode minus the umask. afpAccessDenied,
// and no folder, where another user could get control of it: in a program with raised privileges,
// and for root if a folder above belongs to another user or others may write to it. dupFNErr if an
// item exists at path, else the code of the failure. Throws std::bad_alloc.
OSErr MakeFolder(std::string const& path, mode_t mode);

} // namespace platform
